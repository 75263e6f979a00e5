// The kit's allocators over the C runtime's heap, and what happens when a caller can't go on.
// Whoever receives a block from the kit owns it and gives it back with Q_Free. Sizes are bytes.
#pragma once

#include <cstdint>

namespace ventrix {

/// Bit 0 of an allocator's flags: the allocator does not return null. Where memory runs out it calls the
/// memory hook and raises the platform exception with code 1.
constexpr std::uint32_t kMustSucceed = 1;

/// Called before the platform exception is raised. Both are empty until a client sets them.
using Q_Hook = void (*)();
inline Q_Hook Q_MemoryHook = nullptr;     ///< A must-succeed allocation failed.
inline Q_Hook Q_AssertionHook = nullptr;  ///< Q_Fatal was reached.

/// A block with undefined content. Null when memory runs out and kMustSucceed is not set.
void* Q_Alloc(std::uint32_t size, std::uint32_t flags);

/// A zeroed block of count times size bytes. Null as Q_Alloc.
void* Q_Calloc(std::uint32_t count, std::uint32_t size, std::uint32_t flags);

/// The block in its new size; a null block is allocated anew. On a null result the old block is still the
/// caller's, except that a size of 0 without kMustSucceed frees it.
void* Q_Realloc(void* block, std::uint32_t size, std::uint32_t flags);

/// Frees the block; null is allowed. Always 0.
int Q_Free(void* block);

/// Frees the block that a pointer variable of any type holds, and stores null in it. Null is allowed. Always
/// 0.
int Q_FreeAndClear(void* blockAddress);

/// Sets the block to zero. 0, or 1 if the block is null.
int Q_ZeroBytes(void* block, std::uint32_t size);

/// What a must-succeed allocation does when memory runs out.
[[noreturn]] void Q_MemoryFailure();

/// Ends what can't go on: the assertion hook, then the platform exception with code 1.
[[noreturn]] void Q_Fatal();

/// A deleter, so that a kit block can stand in a std::unique_ptr.
struct Q_FreeDeleter {
    void operator()(void* block) const { Q_Free(block); }
};

}  // namespace ventrix
