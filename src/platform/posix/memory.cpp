#include "platform/memory.h"

#include <sys/mman.h>

#include <cstdlib>

namespace ventrix::platform {

void* TakeMemory(std::size_t size) {
    constexpr std::size_t largePage = std::size_t{2} * 1024 * 1024;
    // A piece that does not begin and end with a large page has small ones there.
    const std::size_t whole = (size + largePage - 1) / largePage * largePage;
    void* memory = size < largePage ? std::malloc(size) : std::aligned_alloc(largePage, whole);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    if (size >= largePage) {
        ::madvise(memory, whole, MADV_HUGEPAGE);
    }
    return memory;
}

void ReleaseMemory(void* memory) {
    std::free(memory);
}

}  // namespace ventrix::platform
