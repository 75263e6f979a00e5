#include "platform/child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "support/processes.h"
#include "support/test_folder.h"

namespace {

using namespace ventrix::platform;
using ventrix::test::Eventually;
using ventrix::test::IsRunning;
using ventrix::test::TestFolder;

/// Runs a shell script with its output in `out`.
ProgramEnd RunScript(const TestFolder& tree, const std::string& script, const std::string& argument = "x") {
    const std::string program = tree.WriteProgram("program", "#!/bin/sh\n" + script);
    StartedProgram started =
        StartProgram({.arguments = {program, argument}, .outputFile = tree.Native("out")});
    return WaitForProgram(started);
}

TEST(ChildProcess, ReportsHowAProgramEndedOrWhyItDidNotStart) {
    const TestFolder tree;
    const std::string garbage(
        "\x7F"
        "ELF\0\0\0\0garbage",
        15);
    tree.WriteProgram("ends", "#!/bin/sh\nexit 3\n");
    tree.WriteProgram("without a line", "exit 4\n");
    tree.WriteProgram("killed", "#!/bin/sh\nkill -KILL $$\n");
    tree.WriteProgram("lost", "#! /no/such/interpreter -x\n");
    tree.WriteProgram("garbage", garbage);
    tree.WriteProgram("empty", "");
    tree.Write("plain", "#!/bin/sh\n");
    const struct {
        const char *program, *reason;
        int exitCode, signal;
    } rows[] = {
        {"ends", "", 3, 0},
        {"without a line", "", 4, 0},
        {"killed", "", 0, SIGKILL},
        {"lost", "its interpreter /no/such/interpreter does not exist", 0, 0},
        {"garbage", "is not a program that this system can run", 0, 0},
        {"empty", "is not a program that this system can run", 0, 0},
        {"plain", "is not executable", 0, 0},
        {"absent", "does not exist", 0, 0},
    };
    for (const auto& row : rows) {
        const std::string program = tree.Native(row.program);
        StartedProgram started = StartProgram({.arguments = {program}});
        const ProgramEnd end = WaitForProgram(started);
        EXPECT_EQ(end.exitCode, row.exitCode) << row.program;
        EXPECT_EQ(end.signal, row.signal) << row.program;
        EXPECT_EQ(end.notStarted.empty(), *row.reason == '\0') << row.program << ": " << end.notStarted;
        EXPECT_NE(end.notStarted.find(row.reason), std::string::npos) << end.notStarted;
        EXPECT_TRUE(end.notStarted.empty() || end.notStarted.starts_with(program)) << end.notStarted;
    }
    EXPECT_EQ(tree.Count(), 7);
}

TEST(ChildProcess, GivesOutputFileEnvironmentAndNothingElse) {
    const TestFolder tree;
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, &before);
    const int open = ::fcntl(STDERR_FILENO, F_DUPFD, 77);
    const std::string program =
        tree.WriteProgram("program",
                          "#!/bin/sh\ncat\necho \"$1 $ADDED $LANG\" >&2\ngrep -E '^Sig(Blk|Ign)' "
                          "/proc/self/status\nls /proc/$$/fd\n"
                          "cut -d' ' -f5 /proc/$$/stat | grep -qx $$ && echo leads\n");
    tree.Write("out", "before\n");
    StartedProgram started = StartProgram({.arguments = {program, "a b"},
                                           .environment = {{"ADDED", "1 2"}, {"LANG", "C"}},
                                           .outputFile = tree.Native("out")});
    EXPECT_EQ(WaitForProgram(started).exitCode, 0);
    ::close(open);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGPIPE, SIG_DFL);
    // 10 is the script itself, as the shell holds it open.
    EXPECT_EQ(
        tree.Read("out"),
        "before\na b 1 2 C\nSigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n0\n1\n10\n2\nleads\n");
}

TEST(ChildProcess, TakesTenMegabytesOfOutput) {
    const TestFolder tree;
    EXPECT_EQ(RunScript(tree, "head -c 10000000 /dev/zero\nexit 5\n").exitCode, 5);
    EXPECT_EQ(std::filesystem::file_size(tree.Native("out")), 10'000'000U);
}

TEST(ChildProcess, WaitsNoLongerThanAsked) {
    const TestFolder tree;
    const std::string program =
        tree.WriteProgram("program", "#!/bin/sh\nwhile [ ! -e \"$1\" ]; do sleep 0.02; done\n");
    StartedProgram started = StartProgram({.arguments = {program, tree.Native("go")}});
    EXPECT_FALSE(WaitForProgram(started, std::chrono::milliseconds(50)).has_value());
    tree.Write("go", "");
    EXPECT_TRUE(
        Eventually([&] { return WaitForProgram(started, std::chrono::milliseconds(0)).has_value(); }));
}

// Programs left in the background: one that ends when asked, one that does not, and one that detached itself.
// Each would write its `late` file.
constexpr char kBackground[] =
    "cd \"$1\"\n"
    "sh -c 'echo $$ >polite.pid; sleep 2; echo late >polite.late' &\n"
    "sh -c 'trap : TERM; echo $$ >stubborn.pid; sleep 2; sleep 2; echo late >stubborn.late' &\n"
    "setsid sh -c 'echo $$ >detached.pid; sleep 2; echo late >detached.late' &\n"
    "until [ -s polite.pid ] && [ -s stubborn.pid ] && [ -s detached.pid ]; do sleep 0.02; done\n";
constexpr const char* kBackgroundNames[] = {"polite", "stubborn", "detached"};

TEST(ChildProcess, BackgroundProgramsRunUntilTheRunEndsThem) {
    const TestFolder tree;
    OwnStartedPrograms();
    EXPECT_EQ(RunScript(tree, kBackground, tree.Native()).exitCode, 0);
    for (const std::string name : kBackgroundNames) {
        EXPECT_TRUE(IsRunning(tree.Native(name + ".pid"))) << name;
    }
    EndStartedPrograms();
    for (const std::string name : kBackgroundNames) {
        EXPECT_FALSE(IsRunning(tree.Native(name + ".pid"))) << name;
        EXPECT_FALSE(tree.Exists(name + ".late")) << name;
    }
}

TEST(ChildProcess, NothingOutlivesAnOwnerThatIsKilled) {
    const TestFolder tree;
    const std::string program = tree.WriteProgram(
        "program", std::string("#!/bin/sh\n") + kBackground + "echo $$ >main.pid\nexec sleep 20\n");
    const pid_t owner = fork();
    if (owner == 0) {
        StartedProgram started = StartProgram({.arguments = {program, tree.Native()}});
        WaitForProgram(started);
        _exit(0);
    }
    ASSERT_TRUE(Eventually([&] { return IsRunning(tree.Native("main.pid")); }));
    kill(owner, SIGKILL);
    EXPECT_EQ(ventrix::test::AwaitChild(owner), 1000 + SIGKILL);
    for (const std::string name : {"main", "polite", "stubborn", "detached"}) {
        EXPECT_TRUE(Eventually([&] { return !IsRunning(tree.Native(name + ".pid")); })) << name;
        EXPECT_FALSE(tree.Exists(name + ".late")) << name;
    }
}

}  // namespace
