#include "platform/interruption.h"

#include <gtest/gtest.h>

#include "platform/child_process.h"
#include "platform/temp_folder.h"
#include "support/processes.h"
#include "support/test_folder.h"

namespace {

using namespace ventrix::platform;
using ventrix::test::AwaitChild;
using ventrix::test::Eventually;
using ventrix::test::TestFolder;

void Append(const TestFolder& tree, const std::string& line) {
    std::ofstream(tree.Native("log"), std::ios::app) << line << '\n';
}

/// Runs the body in a process that handles interruptions, until the body ends.
template <typename Body>
pid_t StartRun(const Body& body) {
    const pid_t run = fork();
    if (run == 0) {
        HandleInterruptions();
        body();
        _exit(0);
    }
    return run;
}

TEST(Interruption, EndsTheProcessBySignalNumberWhateverItIsDoing) {
    const TestFolder tree;
    // The main thread spends its time in the allocator; a clean-up that needs it must not wait for it.
    const auto allocate = [&] {
        const InterruptionCleanUp cleanUp([&] {
            std::vector<std::string> lines(5000, std::string(200, 'x'));
            Append(tree, lines.back().substr(0, 7));
        });
        tree.Write("ready", "");
        for (std::size_t size = 1;; size = size * 7 % 500'009) {
            std::vector<char> block(size);
            ASSERT_EQ(block.size(), size);
        }
    };
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGTERM, SIGTERM, SIGTERM, SIGTERM, SIGTERM}) {
        const pid_t run = StartRun(allocate);
        EXPECT_TRUE(Eventually([&] { return tree.Exists("ready"); }));
        kill(run, signal);
        EXPECT_EQ(AwaitChild(run), 128 + signal);
        EXPECT_EQ(tree.Read("log"), "xxxxxxx\n");
        std::filesystem::remove(tree.Native("log"));
        std::filesystem::remove(tree.Native("ready"));
    }
}

TEST(Interruption, CleansUpBackwardsAfterProgramsEndedAndPausesAreOver) {
    const TestFolder tree;
    setenv("TMPDIR", tree.Native().c_str(), 1);
    const pid_t run = StartRun([&] {
        const TemporaryFolder temporary("run");
        std::ofstream(temporary.Path() + "/file") << "x";
        const InterruptionCleanUp first([&] { Append(tree, "first"); });
        const InterruptionCleanUp failing([] { throw std::runtime_error("fails"); });
        const InterruptionCleanUp last([&] { Append(tree, "last"); });
        {
            const InterruptionCleanUp over([&] { Append(tree, "over"); });
        }
        const std::string program =
            tree.WriteProgram("program",
                              "#!/bin/sh\ntrap 'echo program >>\"$1\"; exit' TERM\ntouch \"$1.ready\"\nwhile "
                              ":; do sleep 0.02; done\n");
        StartedProgram started = StartProgram({.arguments = {program, tree.Native("log")}});
        {
            const InterruptionPause pause;
            EXPECT_TRUE(Eventually([&] { return tree.Exists("log.ready"); }));
            kill(getpid(), SIGTERM);
            kill(getpid(), SIGINT);
            usleep(100'000);
            Append(tree, "pause");
        }
        WaitForProgram(started);
        sleep(5);
    });
    unsetenv("TMPDIR");
    EXPECT_GT(AwaitChild(run), 128);
    EXPECT_EQ(tree.Read("log"), "pause\nprogram\nlast\nfirst\n");
    EXPECT_EQ(tree.Count(), 3) << "log, log.ready, program";
}

TEST(Interruption, LeavesASignalIgnoredThatWasIgnoredAtTheStart) {
    std::signal(SIGHUP, SIG_IGN);
    const pid_t run = StartRun([] {
        kill(getpid(), SIGHUP);
        usleep(100'000);
    });
    std::signal(SIGHUP, SIG_DFL);
    EXPECT_EQ(AwaitChild(run), 0);
}

}  // namespace
