// Ends runs with a signal at random moments.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include "publishing_world.h"

namespace ventrix::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

constexpr int kTopics = 200;
constexpr int kMoments = 10;

class Killing : public testing::TestWithParam<int> {
  protected:
    void SetUp() override {
        if (const std::string why = ProgramMissing(); !why.empty()) {
            GTEST_SKIP() << why;
        }
        ASSERT_EQ(world_.Begin(), "");
        const auto start = Clock::now();
        ASSERT_EQ(world_.Publish().status, 0);
        duration_ = std::chrono::duration_cast<microseconds>(Clock::now() - start);
        ASSERT_EQ(Lines(world_.SettleAndReturn({})), "");
    }

    Ended PublishAndSignal(int signal, microseconds moment) const {
        ProgramRun run(world_.Native(), world_.PublishArguments(), world_.Environment());
        std::this_thread::sleep_for(moment);
        run.Signal(signal);
        return PublishingWorld::Finish(run);
    }

    static std::string Lines(const std::vector<std::string>& lines) {
        std::string all;
        for (const std::string& line : lines) {
            all += line + "\n";
        }
        return all;
    }

    PublishingWorld world_{kTopics};
    microseconds duration_{};
};

TEST_P(Killing, LosesNothingAndTheNextRunWorks) {
    const int signal = GetParam();
    const int interrupted = signal == SIGKILL ? 1000 + SIGKILL : 128 + signal;
    std::mt19937 random(static_cast<unsigned>(signal));
    int count = 0;
    for (int run = 0; run < kMoments; ++run) {
        const microseconds moment(std::uniform_int_distribution<std::int64_t>(0, duration_.count())(random));
        SCOPED_TRACE("signal after " + std::to_string(moment.count()) + " of " +
                     std::to_string(duration_.count()) + " microseconds");
        const Ended ended = PublishAndSignal(signal, moment);
        count += ended.status == interrupted ? 1 : 0;
        // A run may take less time than the measured one, beside which other programs were busy.
        duration_ = ended.status == 0 ? moment : duration_;
        // Before the program has its handlers, and after its last line, the signal ends it as any program.
        EXPECT_TRUE(ended.status == interrupted || ended.status == 0 || ended.status == 1000 + signal)
            << ended.status << "\n"
            << ended.error;
        if (ended.status >= 1000) {
            EXPECT_EQ(Lines(world_.FaultsAfterKill()), "") << ended.error;
        } else {
            EXPECT_EQ(Lines(world_.FaultsAfterPublish(ended)), "") << ended.status << ended.error;
        }
        EXPECT_EQ(Lines(world_.SettleAndReturn(ended)), "");
    }
    EXPECT_GE(count, kMoments / 2) << "too few runs were still going on when the signal came";
}

INSTANTIATE_TEST_SUITE_P(Signals, Killing, testing::Values(SIGINT, SIGTERM, SIGKILL), [](const auto& row) {
    return std::string(row.param == SIGINT ? "INT" : row.param == SIGTERM ? "TERM" : "KILL");
});

}  // namespace
}  // namespace ventrix::test
