// Counts the live blocks of kit memory and of task memory. The linker wraps both allocators for this (see
// tests/CMakeLists.txt). Freeing a block in the wrong pool, or twice, is recorded as a misuse.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ventrix::test {

struct BlockCounts {
    std::size_t kit;
    std::size_t task;
};

BlockCounts LiveBlocks();

/// The misuses since the last call.
std::vector<std::string> TakeBlockMisuses();

/// Makes the n-th kit allocation from now on fail, counted from 1; 0 for none.
void FailKitAllocation(int n);

}  // namespace ventrix::test
