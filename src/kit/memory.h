// The kit's allocators over the C runtime's heap, and the fatal path for errors that cannot be handled.
// Whoever receives a block from the kit owns it and frees it with Q_Free. Sizes are in bytes.
#pragma once

#include <cstdint>

namespace ventrix {

/// Bit 0 of an allocator's flags: the allocator never returns null. When memory runs out, it calls the
/// memory hook and raises the platform exception with code 1.
constexpr std::uint32_t kMustSucceed = 1;

/// Called before the platform exception is raised. Both are null until a client sets them.
using Q_Hook = void (*)();
inline Q_Hook Q_MemoryHook = nullptr;     ///< A must-succeed allocation failed.
inline Q_Hook Q_AssertionHook = nullptr;  ///< Q_Fatal was called.

/// A block with undefined content. Null when memory runs out and kMustSucceed is not set.
void* Q_Alloc(std::uint32_t size, std::uint32_t flags);

/// A zeroed block of count times size bytes. Null as for Q_Alloc.
void* Q_Calloc(std::uint32_t count, std::uint32_t size, std::uint32_t flags);

/// Resizes the block; a null block is newly allocated. If the result is null, the caller still owns the old
/// block, except that a size of 0 without kMustSucceed frees it.
void* Q_Realloc(void* block, std::uint32_t size, std::uint32_t flags);

/// Frees the block; null is allowed. Always 0.
int Q_Free(void* block);

/// Frees the block that a pointer variable of any type points to, and sets the variable to null. A null
/// address or a null block is allowed. Always 0.
int Q_FreeAndClear(void* blockAddress);

/// Sets the block to zero. 0, or 1 if the block is null.
int Q_ZeroBytes(void* block, std::uint32_t size);

/// Calls the memory hook and raises the platform exception with code 1, as a failed must-succeed allocation
/// does.
[[noreturn]] void Q_MemoryFailure();

/// Calls the assertion hook and raises the platform exception with code 1. The kit calls it when a required
/// argument is null.
[[noreturn]] void Q_Fatal();

/// A deleter that lets a std::unique_ptr own a kit block.
struct Q_FreeDeleter {
    void operator()(void* block) const { Q_Free(block); }
};

}  // namespace ventrix
