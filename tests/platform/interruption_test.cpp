#include "platform/interruption.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

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
    // The main thread stays out of the allocator, whose locks a fork below AddressSanitizer leaves taken in
    // the copy. The tests of faults interrupt the release build, which allocates all the time.
    const std::string ready = tree.Native("ready");
    const auto compute = [&] {
        const InterruptionCleanUp cleanUp([&] { Append(tree, "cleaned up"); });
        close(creat(ready.c_str(), 0600));
        for (volatile unsigned number = 0;;) {
            number = number + 1;
        }
    };
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const pid_t run = StartRun(compute);
        EXPECT_TRUE(Eventually([&] { return tree.Exists("ready"); }));
        kill(run, signal);
        EXPECT_EQ(AwaitChild(run), 128 + signal);
        EXPECT_EQ(tree.Read("log"), "cleaned up\n");
        std::filesystem::remove(tree.Native("log"));
        std::filesystem::remove(ready);
    }
}

TEST(Interruption, RunsCleanUpsInReverseOrderAfterProgramsAndPausesEnd) {
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

TEST(Interruption, SignalThatWasIgnoredAtTheStartStaysIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    const pid_t run = StartRun([] {
        kill(getpid(), SIGHUP);
        usleep(100'000);
    });
    std::signal(SIGHUP, SIG_DFL);
    EXPECT_EQ(AwaitChild(run), 0);
}

}  // namespace
