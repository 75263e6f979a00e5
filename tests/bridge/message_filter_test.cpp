#include "bridge/message_filter.h"

#include <gtest/gtest.h>

namespace ventrix::test {
namespace {

TEST(MessageFilterTest, RetryDelayGrowsWithTheElapsedTime) {
    const struct {
        DWORD rejectType, elapsed, answer;
    } rows[] = {
        {SERVERCALL_REJECTED, 0, 0xFFFFFFFF},
        {SERVERCALL_REJECTED, 500, 0xFFFFFFFF},
        {SERVERCALL_RETRYLATER, 0, 0},
        {SERVERCALL_RETRYLATER, 200, 0},
        {SERVERCALL_RETRYLATER, 201, 50},
        {SERVERCALL_RETRYLATER, 1000, 250},
        {SERVERCALL_RETRYLATER, 1199999, 299999},
        {SERVERCALL_RETRYLATER, 1200000, 0xFFFFFFFF},
    };
    auto* filter = new DefaultClientMessageFilterC;
    for (const auto& row : rows) {
        EXPECT_EQ(filter->RetryRejectedCall(nullptr, row.elapsed, row.rejectType), row.answer) << row.elapsed;
    }
    EXPECT_EQ(filter->HandleInComingCall(1, nullptr, 0, nullptr), 0U);
    EXPECT_EQ(filter->MessagePending(nullptr, 0, 1), 2U);
    void* found = nullptr;
    EXPECT_EQ(filter->QueryInterface(IID_IMessageFilter, &found), S_OK);
    EXPECT_EQ(found, static_cast<IMessageFilter*>(filter));
    EXPECT_EQ(filter->Release(), 1U);
    EXPECT_EQ(filter->Release(), 0U);
}

}  // namespace
}  // namespace ventrix::test
