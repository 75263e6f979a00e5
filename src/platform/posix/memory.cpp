#include "platform/memory.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <new>

namespace ventrix::platform {
namespace {

constexpr std::size_t largePage = std::size_t{2} * 1024 * 1024;

}  // namespace

void ExpectFullUse(void* memory, std::size_t size) {
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (begin + largePage - 1) / largePage * largePage;
    const std::uintptr_t end = (begin + size) / largePage * largePage;
    if (first < end) {
        ::madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
    }
}

void* TakeMemory(std::size_t size) {
    // A piece that does not begin with a large page has none for its first part.
    const std::size_t whole = (size + largePage - 1) / largePage * largePage;
    void* memory = size < largePage ? std::malloc(size) : std::aligned_alloc(largePage, whole);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ExpectFullUse(memory, size < largePage ? size : whole);
    return memory;
}

void ReleaseMemory(void* memory) {
    std::free(memory);
}

}  // namespace ventrix::platform
