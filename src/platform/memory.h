// Large blocks of heap memory.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace ventrix::platform {

/// Allocates a block that is going to be used as a whole. From 2 MB on it is backed by large pages, which
/// saves a page fault for every 4 KB. Throws std::bad_alloc when memory runs out. ReleaseMemory frees the
/// block.
void* TakeMemory(std::size_t size);
void ReleaseMemory(void* memory);

/// An allocator over TakeMemory for standard containers. Elements that are added without a value are
/// default-initialised, so that a resize does not set bytes to zero that are about to be overwritten.
template <typename T>
struct FullUseAllocator {
    using value_type = T;

    FullUseAllocator() = default;
    template <typename Other>
    explicit FullUseAllocator(const FullUseAllocator<Other>&) {}

    T* allocate(std::size_t count) { return static_cast<T*>(TakeMemory(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t) { ReleaseMemory(memory); }

    template <typename Element>
    void construct(Element* place) {
        ::new (static_cast<void*>(place)) Element;
    }

    bool operator==(const FullUseAllocator&) const = default;
};

/// The content of a file, or other large data.
using Bytes = std::vector<char, FullUseAllocator<char>>;

}  // namespace ventrix::platform
