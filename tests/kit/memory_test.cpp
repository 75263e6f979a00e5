#include "kit/memory.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

namespace ventrix {
namespace {

constexpr std::uint32_t kTooMany = 0xFFFFFFFF;

TEST(Memory, BlocksAreZeroedResizedAndFreed) {
    auto* block = static_cast<char*>(Q_Calloc(4, 2, 0));
    const char zeros[8] = {};
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::memcmp(block, zeros, 8), 0);
    std::memset(block, 'x', 8);
    block = static_cast<char*>(Q_Realloc(block, 1000, kMustSucceed));
    EXPECT_EQ(std::string(block, 8), "xxxxxxxx");
    EXPECT_EQ(Q_ZeroBytes(block, 8), 0);
    EXPECT_EQ(std::memcmp(block, zeros, 8), 0);
    EXPECT_EQ(Q_FreeAndClear(&block), 0);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(Q_Free(nullptr), 0);
    EXPECT_EQ(Q_FreeAndClear(nullptr), 0);
    EXPECT_EQ(Q_ZeroBytes(nullptr, 8), 1);
}

TEST(Memory, SizeOfZeroGivesABlockIfTheAllocationMustSucceed) {
    void* blocks[] = {Q_Alloc(0, kMustSucceed), Q_Calloc(0, 8, kMustSucceed),
                      Q_Realloc(Q_Alloc(8, 0), 0, kMustSucceed)};
    for (void*& block : blocks) {
        EXPECT_NE(block, nullptr);
        Q_FreeAndClear(&block);
    }
}

TEST(MemoryDeathTest, RunningOutGivesNullOrCallsTheHookAndEndsTheProcess) {
    EXPECT_EQ(Q_Calloc(kTooMany, kTooMany, 0), nullptr);
    const auto runOut = [] {
        Q_MemoryHook = [] { std::fputs("memory hook\n", stderr); };
        Q_AssertionHook = [] { std::fputs("assertion hook\n", stderr); };
        Q_Calloc(kTooMany, kTooMany, kMustSucceed);
    };
    EXPECT_DEATH(runOut(), "memory hook");
}

TEST(MemoryDeathTest, FatalCallsTheAssertionHookAndEndsTheProcess) {
    const auto fail = [] {
        Q_AssertionHook = [] { std::fputs("assertion hook\n", stderr); };
        Q_Fatal();
    };
    EXPECT_DEATH(fail(), "assertion hook");
    EXPECT_DEATH(Q_Fatal(), "");
}

}  // namespace
}  // namespace ventrix
