// The out-of-process example from end to end, with the desk host as the running host. The tests of the bridge
// cover how a client finds a host and waits for it.
#include <gtest/gtest.h>

#include <thread>

#include "bridge/contract/host_interfaces.h"
#include "platform/environment.h"
#include "running_host.h"
#include "support/environment.h"
#include "word_counter.h"

namespace ventrix::example {
namespace {

using Values = std::vector<desk::AnswerValue>;

// The client has its own thread here, as it would have its own process.
std::int32_t RunClient(const char* serverName) {
    std::int32_t result = -1;
    std::thread client([&] { result = RunWordCounter(serverName); });
    client.join();
    return result;
}

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
    EXPECT_EQ(RunClient(nullptr), 0);
    const std::vector<Answer> expected = {Values{0, "3 words"}, Values{-43, ""}, Values{0, "0 words"}};
    EXPECT_EQ(host.Answers(), expected);
    EXPECT_EQ(host.Console(), "Word counter: 3 words\nWord counter: 0 words\n");
    EXPECT_EQ(host.Host().RegisteredName(), "Word counter") << "from the program's version block";
    EXPECT_EQ(host.Host().HeldReferences(), 0);
}

TEST_F(OutOfProcessExample, ClientIsCalledOnlyByItsOwnName) {
    settings_.clientName = "Letter counter";
    RunningHost host(settings_);
    EXPECT_EQ(RunClient(nullptr), 0);
    EXPECT_EQ(host.Answers(), std::vector<Answer>(3));
    EXPECT_EQ(RunClient("no-such-server"), 1);
}

}  // namespace
}  // namespace ventrix::example
