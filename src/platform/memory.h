// Memory in large pieces, of the heap.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace ventrix::platform {

/// Memory that is about to be used from end to end, from its beginning on. From some megabytes on it comes in
/// large pages, and not 4 KB at a time with a stop for each. Throws std::bad_alloc where there is none.
/// ReleaseMemory takes it back.
void* TakeMemory(std::size_t size);
void ReleaseMemory(void* memory);

/// Lets a standard container have its memory from TakeMemory. Elements that are given no value, and have none
/// by themselves, are not set to zero.
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

/// A file's content, or another large text.
using Bytes = std::vector<char, FullUseAllocator<char>>;

}  // namespace ventrix::platform
