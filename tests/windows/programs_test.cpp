// Programs that are started, with command scripts.
#include <gtest/gtest.h>

#include "platform/child_process.h"
#include "platform/environment.h"
#include "platform/process.h"
#include "support/test_folder.h"

namespace ventrix::platform {
namespace {

using test::TestFolder;

ProgramEnd EndOf(const ProgramStart& start) {
    StartedProgram program = StartProgram(start);
    return WaitForProgram(program);
}

TEST(WindowsPrograms, ScriptReceivesArgumentsAndEnvironment) {
    const TestFolder tree;
    for (const char* name : {"my script.cmd", "my script.bat"}) {
        tree.Write(name, "@echo %~1^|%~2^|%ADDED%\r\n@echo problem 1>&2\r\n@exit /b 7\r\n");
        const ProgramEnd end = EndOf({.arguments = {tree.Native(name), "a b", "c"},
                                      .environment = {{"ADDED", "from the run"}},
                                      .outputFile = tree.Native("output")});
        EXPECT_EQ(end.notStarted, "");
        EXPECT_EQ(end.exitCode, 7);
        EXPECT_EQ(tree.Read("output"), "a b|c|from the run\r\nproblem \r\n");
        std::filesystem::remove(PathFromUtf8(tree.Native("output")));
    }
}

TEST(WindowsPrograms, FailureToStartNamesTheProgram) {
    const TestFolder tree;
    tree.Write("garbage.exe", "no program");
    EXPECT_EQ(EndOf({.arguments = {tree.Native("none.exe")}}).notStarted,
              tree.Native("none.exe") + " does not exist");
    EXPECT_EQ(EndOf({.arguments = {tree.Native("garbage.exe")}}).notStarted,
              tree.Native("garbage.exe") + " is not a program that this system can run");
}

TEST(WindowsPrograms, WaitEndsAtItsLimitAndAllProgramsCanBeEnded) {
    const TestFolder tree;
    tree.Write("waits.cmd", "@ping -n 30 127.0.0.1 >nul\r\n");
    StartedProgram program = StartProgram({.arguments = {tree.Native("waits.cmd")}});
    ASSERT_EQ(program.notStarted, "");
    EXPECT_FALSE(WaitForProgram(program, std::chrono::milliseconds(50)));
    EndStartedPrograms();
    EXPECT_EQ(WaitForProgram(program).exitCode, 1);
}

TEST(WindowsPrograms, ModulesCallStartsScriptsByCommandLine) {
    const TestFolder tree;
    tree.Write("pre script.cmd", "@exit /b 5\r\n");
    ProcessHandle process;
    EXPECT_EQ(
        StartProcess('"' + tree.System("pre script.cmd") + "\" \"" + tree.System("a b.xml") + '"', process),
        kErrorNone);
    EXPECT_EQ(WaitForProcess(process), 5);
    EXPECT_EQ(WaitForProcess(process), -1);
    EXPECT_EQ(StartProcess('"' + tree.System("none.exe") + '"', process), kErrorFileNotFound);
    EXPECT_EQ(StartProcess("", process), kErrorInvalidParameter);
    EXPECT_EQ(process.id, 0);
    EXPECT_NE(FindInPath("cmd"), "");
    EXPECT_EQ(FindInPath("ventrix-no-such-program"), "");
}

}  // namespace
}  // namespace ventrix::platform
