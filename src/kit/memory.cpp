#include "kit/memory.h"

#include <cstdlib>
#include <cstring>

#include "platform/exception.h"

namespace ventrix {
namespace {

[[noreturn]] void Raise(Q_Hook hook) {
    if (hook != nullptr) {
        hook();
    }
    platform::RaisePlatformException(1);
}

void* Checked(void* block, std::uint32_t flags) {
    if (block == nullptr && (flags & kMustSucceed) != 0) {
        Q_MemoryFailure();
    }
    return block;
}

// The C runtime may return null for a size of 0, which must not look like a failed allocation.
std::uint32_t AtLeastOne(std::uint32_t size, std::uint32_t flags) {
    return size == 0 && (flags & kMustSucceed) != 0 ? 1 : size;
}

}  // namespace

void* Q_Alloc(std::uint32_t size, std::uint32_t flags) {
    return Checked(std::malloc(AtLeastOne(size, flags)), flags);
}

void* Q_Calloc(std::uint32_t count, std::uint32_t size, std::uint32_t flags) {
    return Checked(std::calloc(AtLeastOne(count, flags), AtLeastOne(size, flags)), flags);
}

void* Q_Realloc(void* block, std::uint32_t size, std::uint32_t flags) {
    return Checked(std::realloc(block, AtLeastOne(size, flags)), flags);
}

int Q_Free(void* block) {
    std::free(block);
    return 0;
}

int Q_FreeAndClear(void* blockAddress) {
    if (blockAddress == nullptr) {
        return 0;
    }
    void* block = nullptr;
    std::memcpy(&block, blockAddress, sizeof block);
    Q_Free(block);
    std::memset(blockAddress, 0, sizeof block);
    return 0;
}

int Q_ZeroBytes(void* block, std::uint32_t size) {
    if (block == nullptr) {
        return 1;
    }
    std::memset(block, 0, size);
    return 0;
}

void Q_MemoryFailure() {
    Raise(Q_MemoryHook);
}

void Q_Fatal() {
    Raise(Q_AssertionHook);
}

}  // namespace ventrix
