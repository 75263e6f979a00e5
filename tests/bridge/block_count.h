// Counts the blocks of the two memory pools, the kit's and the platform's task memory, by standing in front
// of their allocators (the linker puts it there; see tests/CMakeLists.txt). A block that goes back to the
// wrong pool or goes back twice is noted as a misuse.
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

/// What was noted since the last call.
std::vector<std::string> TakeBlockMisuses();

/// Lets the n-th kit allocation from now on fail, counted from 1; 0 for none.
void FailKitAllocation(int n);

}  // namespace ventrix::test
