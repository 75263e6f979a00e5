// Memory in large pieces. The heap gives it; the system may be told what it is for.
#pragma once

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

namespace ventrix::platform {

/// Tells the system that this memory, not yet touched, is about to be used from end to end: it then comes in
/// large pages, and not 4 KB at a time with a stop for each. Only a hint, for pieces of some megabytes;
/// smaller ones are passed over.
void ExpectFullUse(void* memory, std::size_t size);

/// Memory that is about to be used from end to end, from its beginning on. Throws std::bad_alloc where there
/// is none. ReleaseMemory takes it back.
void* TakeMemory(std::size_t size);
void ReleaseMemory(void* memory);

/// Lets a standard container have its memory from TakeMemory. Elements that are given no value, and have none by
/// themselves, are not set to zero.
template <typename T>
struct FullUseAllocator {
    using value_type = T;

    FullUseAllocator() = default;
    template <typename Other>
    explicit FullUseAllocator(const FullUseAllocator<Other>&) {}

    T* allocate(std::size_t count) { return static_cast<T*>(TakeMemory(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t) { ReleaseMemory(memory); }

    template <typename Element, typename... Values>
    void construct(Element* place, Values&&... values) {
        if constexpr (sizeof...(values) == 0) {
            ::new (static_cast<void*>(place)) Element;
        } else {
            ::new (static_cast<void*>(place)) Element(std::forward<Values>(values)...);
        }
    }

    bool operator==(const FullUseAllocator&) const = default;
};

/// A file's content, or another large text.
using Bytes = std::vector<char, FullUseAllocator<char>>;

}  // namespace ventrix::platform
