#include "bridge/block_count.h"

#include <cstdint>
#include <set>
#include <utility>

namespace {

std::set<void*> kitBlocks;
std::set<void*> taskBlocks;
std::vector<std::string> misuses;
int allocationsUntilFailure = 0;

void* Note(std::set<void*>& pool, void* block) {
    if (block != nullptr) {
        pool.insert(block);
    }
    return block;
}

// Whether the block may be freed in this pool.
bool Forget(std::set<void*>& pool, void* block, const char* poolName) {
    if (block != nullptr && pool.erase(block) == 0) {
        misuses.push_back(std::string("a block that is not live in it was freed in ") + poolName);
        return false;
    }
    return true;
}

bool FailsNow() {
    return allocationsUntilFailure > 0 && --allocationsUntilFailure == 0;
}

}  // namespace

// The linker fixes these names: __real_ is the original function, __wrap_ its replacement. The code of
// std::size_t in them depends on the platform.
#ifdef _WIN32
#define TASK_ALLOCATION(prefix) prefix##_ZN7ventrix14CoTaskMemAllocEy
#else
#define TASK_ALLOCATION(prefix) prefix##_ZN7ventrix14CoTaskMemAllocEm
#endif

extern "C" {
void* __real__ZN7ventrix7Q_AllocEjj(std::uint32_t size, std::uint32_t flags);
void* __real__ZN7ventrix8Q_CallocEjjj(std::uint32_t count, std::uint32_t size, std::uint32_t flags);
void* __real__ZN7ventrix9Q_ReallocEPvjj(void* block, std::uint32_t size, std::uint32_t flags);
int __real__ZN7ventrix6Q_FreeEPv(void* block);
void* TASK_ALLOCATION(__real_)(std::size_t size);
void __real__ZN7ventrix13CoTaskMemFreeEPv(void* block);

void* __wrap__ZN7ventrix7Q_AllocEjj(std::uint32_t size, std::uint32_t flags) {
    return FailsNow() ? nullptr : Note(kitBlocks, __real__ZN7ventrix7Q_AllocEjj(size, flags));
}

void* __wrap__ZN7ventrix8Q_CallocEjjj(std::uint32_t count, std::uint32_t size, std::uint32_t flags) {
    return FailsNow() ? nullptr : Note(kitBlocks, __real__ZN7ventrix8Q_CallocEjjj(count, size, flags));
}

void* __wrap__ZN7ventrix9Q_ReallocEPvjj(void* block, std::uint32_t size, std::uint32_t flags) {
    if (FailsNow() || !Forget(kitBlocks, block, "the kit")) {
        return nullptr;
    }
    return Note(kitBlocks, __real__ZN7ventrix9Q_ReallocEPvjj(block, size, flags));
}

int __wrap__ZN7ventrix6Q_FreeEPv(void* block) {
    return Forget(kitBlocks, block, "the kit") ? __real__ZN7ventrix6Q_FreeEPv(block) : 0;
}

void* TASK_ALLOCATION(__wrap_)(std::size_t size) {
    return Note(taskBlocks, TASK_ALLOCATION(__real_)(size));
}

void __wrap__ZN7ventrix13CoTaskMemFreeEPv(void* block) {
    if (Forget(taskBlocks, block, "task memory")) {
        __real__ZN7ventrix13CoTaskMemFreeEPv(block);
    }
}
}

namespace ventrix::test {

BlockCounts LiveBlocks() {
    return {kitBlocks.size(), taskBlocks.size()};
}

std::vector<std::string> TakeBlockMisuses() {
    return std::exchange(misuses, {});
}

void FailKitAllocation(int n) {
    allocationsUntilFailure = n;
}

}  // namespace ventrix::test
