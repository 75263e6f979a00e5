#include "platform/memory.h"

#include <sys/mman.h>

#include <cstdlib>

namespace ventrix::platform {

void* TakeMemory(std::size_t size) {
    constexpr std::size_t kLargePage = std::size_t{2} * 1024 * 1024;
    // Only whole, aligned large pages count; the rest of a block would be backed by small ones.
    const std::size_t whole = (size + kLargePage - 1) / kLargePage * kLargePage;
    void* memory = size < kLargePage ? std::malloc(size) : std::aligned_alloc(kLargePage, whole);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    if (size >= kLargePage) {
        ::madvise(memory, whole, MADV_HUGEPAGE);
    }
    return memory;
}

void ReleaseMemory(void* memory) {
    std::free(memory);
}

}  // namespace ventrix::platform
