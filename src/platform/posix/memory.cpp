#include "platform/memory.h"

#include <sys/mman.h>

#include <cstdint>

namespace ventrix::platform {

void ExpectFullUse(void* memory, std::size_t size) {
    constexpr std::uintptr_t largePage = std::uintptr_t{2} * 1024 * 1024;
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (begin + largePage - 1) / largePage * largePage;
    const std::uintptr_t end = (begin + size) / largePage * largePage;
    if (first < end) {
        ::madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
    }
}

}  // namespace ventrix::platform
