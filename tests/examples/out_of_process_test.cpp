// The out-of-process example from end to end, with the desk host as the running host and a clock that stands
// still unless a call waits.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "bridge/contract/host_interfaces.h"
#include "platform/com_runtime.h"
#include "platform/environment.h"
#include "running_host.h"
#include "word_counter.h"

namespace ventrix::example {
namespace {

using Values = std::vector<desk::AnswerValue>;

struct TestTime {
    std::uint32_t now = 0;
    std::vector<std::uint32_t> waits;
    platform::CallClock clock = {[this] { return now += 20; },
                                 [this](std::uint32_t milliseconds) {
                                     waits.push_back(milliseconds);
                                     now += milliseconds;
                                 }};
};

// The client has a thread of its own, as it would have a process.
std::int32_t RunClient(const char* serverName) {
    std::int32_t result = -1;
    std::thread client([&] { result = RunWordCounter(serverName); });
    client.join();
    return result;
}

class OutOfProcessExample : public ::testing::Test {
  protected:
    void SetUp() override {
        platform::RemoveEnvironmentValue("QLGUID");
        platform::ReplaceCallClock(&time_.clock);
        settings_.classId = HostClassId;
        settings_.clientName = "Word counter";
        settings_.commands = {"Count one two three", "Sing", "Count "};
    }
    void TearDown() override {
        platform::ReplaceCallClock(nullptr);
        platform::RemoveEnvironmentValue("QLGUID");
    }

    TestTime time_;
    RunningHostSettings settings_;
};

TEST_F(OutOfProcessExample, AnswersTheHostsCalls) {
    RunningHost host(settings_);
    EXPECT_EQ(RunClient(nullptr), 0);
    const std::vector<Answer> expected = {Values{0, "3 words"}, Values{-43, ""}, Values{0, "0 words"}};
    EXPECT_EQ(host.Answers(), expected);
    EXPECT_EQ(host.Console(), "Word counter: 3 words\nWord counter: 0 words\n");
    EXPECT_EQ(host.Host().RegisteredName(), "Word counter") << "from the program's version block";
    EXPECT_EQ(host.Host().HeldReferences(), 0);
    EXPECT_EQ(time_.waits, std::vector<std::uint32_t>());
}

TEST_F(OutOfProcessExample, IsCalledByItsOwnNameOnly) {
    settings_.clientName = "Letter counter";
    RunningHost host(settings_);
    EXPECT_EQ(RunClient(nullptr), 0);
    EXPECT_EQ(host.Answers(), std::vector<Answer>(3));
}

TEST_F(OutOfProcessExample, FindsAHostByEnvironmentAndServer) {
    settings_.classId = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    settings_.server = u"author-1";
    RunningHost host(settings_);
    EXPECT_EQ(RunClient("author-1"), 1) << "another class";
    platform::SetEnvironmentValue("QLGUID", "{00000001-0002-0003-0405-060708090a0b}");
    EXPECT_EQ(RunClient("author-2"), 1);
    EXPECT_EQ(RunClient(nullptr), 1);
    EXPECT_EQ(RunClient("author-1"), 0);
    EXPECT_EQ(host.Answers().size(), 3U);
}

TEST_F(OutOfProcessExample, IsPatientWithABusyHost) {
    settings_.busy = [this] { return time_.now < 60000; };
    RunningHost host(settings_);
    EXPECT_EQ(RunClient(nullptr), 0);
    ASSERT_EQ(host.Answers().size(), 3U);
    EXPECT_EQ(host.Answers()[0], Answer(Values{0, "3 words"}));
    ASSERT_FALSE(time_.waits.empty());
    EXPECT_GE(time_.waits.front(), 100U);
    EXPECT_TRUE(std::is_sorted(time_.waits.begin(), time_.waits.end())) << "ever more slowly";
    EXPECT_LT(time_.now, 90000U);
}

TEST_F(OutOfProcessExample, GivesUpOnAHostThatStaysBusy) {
    settings_.busy = [] { return true; };
    RunningHost host(settings_);
    EXPECT_EQ(RunClient(nullptr), 1) << "not even its registration got through";
    EXPECT_EQ(host.Host().HeldReferences(), 0);
    EXPECT_GE(time_.now, 1200000U) << "twenty minutes";
}

}  // namespace
}  // namespace ventrix::example
