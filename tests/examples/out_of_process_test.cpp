// The out-of-process example from end to end, with the desk host as the running host. The tests of the bridge
// cover how a client finds a host and waits for it.
#include <gtest/gtest.h>

#include "bridge/contract/host_interfaces.h"
#include "platform/environment.h"
#include "running_host.h"
#include "support/environment.h"
#include "support/wine.h"

namespace ventrix::example {
namespace {

using Values = std::vector<desk::AnswerValue>;

class OutOfProcessExample : public ::testing::Test {
  protected:
    void SetUp() override {
        test::RemoveVariable("QLGUID");
        settings_.classId = kHostClassId;
        settings_.clientName = "Word counter";
        settings_.commands = {"Count one two three", "Sing", "Count "};
    }

    RunningHostSettings settings_;
};

TEST_F(OutOfProcessExample, CallsOfTheHostAreAnswered) {
    RunningHost host(settings_);
    EXPECT_EQ(host.Serve(), 0);
    const std::vector<Answer> expected = {Values{0, "3 words"}, Values{-43, ""}, Values{0, "0 words"}};
    EXPECT_EQ(host.Answers(), expected);
    EXPECT_EQ(host.Console(), "Word counter: 3 words\nWord counter: 0 words\n");
    EXPECT_EQ(host.Host().RegisteredName(), "Word counter") << "from the client's version block";
    EXPECT_EQ(host.Host().HeldReferences(), 0);
}

TEST_F(OutOfProcessExample, ClientIsCalledOnlyByItsOwnName) {
    settings_.clientName = "Letter counter";
    RunningHost host(settings_);
    EXPECT_EQ(host.Serve(), 0);
    EXPECT_EQ(host.Answers(), std::vector<Answer>(3));
}

TEST_F(OutOfProcessExample, OtherClassIsNotFound) {
    settings_.classId.Data1 = 1;
    RunningHost host(settings_);
    EXPECT_EQ(host.Serve(), 1);
    EXPECT_EQ(host.Answers(), std::vector<Answer>());
}

TEST_F(OutOfProcessExample, UnknownServerIsNotFound) {
    RunningHost host(settings_);
    EXPECT_EQ(host.Serve("no-such-server"), 1);
}

// How often a host is asked whether it is busy that is so for the first calls.
int CallsToHost(RunningHostSettings settings, int busyCalls) {
    int calls = 0;
    settings.busy = [&] { return calls++ < busyCalls; };
    RunningHost host(settings);
    EXPECT_EQ(host.Serve(), 0);
    EXPECT_EQ(host.Answers().size(), settings.commands.size());
    EXPECT_EQ(host.Console(), "Word counter: 3 words\nWord counter: 0 words\n");
    return calls;
}

TEST_F(OutOfProcessExample, CallsThatABusyHostRejectsAreRepeated) {
    CallsToHost(settings_, 0);  // The first connection of a process asks the host for a folder.
    const int calls = CallsToHost(settings_, 0);
    EXPECT_GE(calls, 8);
    // Wine asks the host's message filter, but makes a call that the filter rejects all the same.
    EXPECT_EQ(CallsToHost(settings_, 5), test::UnderWine() ? calls : calls + 5);
}

}  // namespace
}  // namespace ventrix::example
