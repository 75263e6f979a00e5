#include "platform/memory.h"

#include <cstdlib>

namespace ventrix::platform {

// Large pages need a privilege that users do not have.
void* TakeMemory(std::size_t size) {
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void ReleaseMemory(void* memory) {
    std::free(memory);
}

}  // namespace ventrix::platform
