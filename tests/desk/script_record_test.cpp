#include "desk/script/script_record.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include "desk/folder_fixture.h"
#include "platform/child_process.h"
#include "platform/process.h"
#include "support/processes.h"

namespace ventrix::desk {
namespace {

class ScriptRecordTest : public FolderFixture {
  protected:
    ScriptRecordTest() { platform::OwnStartedPrograms(); }
    ~ScriptRecordTest() override { platform::EndStartedPrograms(); }

    /// Prepares the script and starts it as the module does, with `shown` as the standard output.
    platform::ProcessHandle Start(const std::string& script) {
        std::filesystem::remove_all(Native("private"));
        std::filesystem::create_directory(Native("private"));
        const std::string path = PrepareScript(Native("private"), kPreScript, VENTRIX_RECORDER,
                                               {Native(script), Native("package"), platform::ProcessId()});
        platform::ProcessHandle process;
        const std::string command =
            "\"" + platform::ToSystem(path).value() + "\" \"" + System("package/d ö.xml") + "\"";
        const int output = dup(STDOUT_FILENO);
        const int shown = open(Native("shown").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(shown, STDOUT_FILENO);
        EXPECT_EQ(platform::StartProcess(command, process), platform::kErrorNone);
        dup2(output, STDOUT_FILENO);
        close(output);
        close(shown);
        return process;
    }
    ScriptRecord Run(const std::string& script) {
        platform::ProcessHandle process = Start(script);
        platform::WaitForProcess(process);
        return Record();
    }
    ScriptRecord Record() { return ReadScriptRecord(Native("private"), kPreScript); }
};

TEST_F(ScriptRecordTest, DescribesHowAScriptEnded) {
    WriteProgram("fine", "#!/bin/sh\ncat >/dev/null\ncd /\n");
    WriteProgram("three", "#!/bin/sh\necho out\necho err >&2\nexit 3\n");
    WriteProgram("killed", "#!/bin/sh\necho before\nkill -SEGV $$\n");
    WriteProgram("lost", "#!/no/such/interpreter\n");
    WriteProgram("garbage", std::string("\x7F"
                                        "ELF\0\0\0\0garbage",
                                        15));
    Write("plain", "#!/bin/sh\n");
    const struct {
        const char* script;
        ScriptState state;
        const char* failure;  // After the script's path.
        std::vector<std::string> lastLines;
    } rows[] = {
        {"fine", ScriptState::kEnded, "", {}},
        {"three", ScriptState::kEnded, " failed with exit status 3", {"out", "err"}},
        {"killed", ScriptState::kEnded, " was terminated by signal 11", {"before"}},
        {"lost",
         ScriptState::kNotStarted,
         " cannot be started: its interpreter /no/such/interpreter does not exist",
         {}},
        {"garbage", ScriptState::kNotStarted, " is not a program that this system can run", {}},
        {"plain",
         ScriptState::kNotStarted,
         " cannot be started: the file or its interpreter is not executable",
         {}},
    };
    for (const auto& row : rows) {
        const ScriptRecord record = Run(row.script);
        EXPECT_EQ(record.state, row.state) << row.script;
        EXPECT_EQ(record.lastLines, row.lastLines) << row.script;
        EXPECT_EQ(Succeeded(record), *row.failure == '\0') << row.script;
        EXPECT_EQ(DescribeFailure(record, Native(row.script)),
                  *row.failure == '\0' ? "" : Native(row.script) + row.failure);
    }
}

TEST_F(ScriptRecordTest, DistinguishesAScriptThatWasNotCalledFromALostRecord) {
    WriteProgram("waits", "#!/bin/sh\necho begun\necho $$ >\"$(dirname \"$0\")/pid\"\nsleep 20\n");
    platform::ProcessHandle process = Start("waits");
    ASSERT_TRUE(test::Eventually([&] { return test::IsRunning(Native("pid")); }));
    kill(static_cast<pid_t>(process.id), SIGKILL);
    platform::WaitForProcess(process);
    EXPECT_EQ(Record().state, ScriptState::kUnknown);
    EXPECT_EQ(Record().lastLines, std::vector<std::string>{"begun"});
    EXPECT_NE(DescribeFailure(Record(), "waits"), "");

    std::filesystem::remove_all(Native("private"));
    std::filesystem::create_directory(Native("private"));
    PrepareScript(Native("private"), kPreScript, VENTRIX_RECORDER, {Native("waits"), "", 1});
    EXPECT_EQ(Record().state, ScriptState::kNotCalled);
    EXPECT_EQ(DescribeFailure(Record(), "waits"), "waits was not called");
}

TEST_F(ScriptRecordTest, ScriptGetsTheDocumentAndItsOwnNameAndThePackageIsNotedBefore) {
    Write("package/d ö.xml", "<d/>");
    Write("package/img/a\nb.png", "12345");
    std::filesystem::create_symlink("..", Native("package/up"));
    WriteProgram("script", "#!/bin/sh\nprintf '%s\\n' \"$0\" \"$#\" \"$1\"\necho changed >\"$1\"\n");
    const std::vector<PackageFile> before = ListPackage(Native("package"));
    const ScriptRecord record = Run("script");
    EXPECT_EQ(record.lastLines, (std::vector<std::string>{Native("script"), "1", Native("package/d ö.xml")}));
    ASSERT_EQ(record.package.size(), 2U);
    EXPECT_EQ(record.package[1].name, "img/a\nb.png");
    EXPECT_EQ(record.package[1].size, 5U);
    EXPECT_EQ(record.package, before);
    const std::vector<PackageFile> after = ListPackage(Native("package"));
    EXPECT_EQ(after[0].size, 8U);
    EXPECT_GT(after[0].modified, before[0].modified);
}

TEST_F(ScriptRecordTest, KeepsTheLastLinesOfAnyOutput) {
    const struct {
        const char* body;
        std::vector<std::string> lastLines;
    } rows[] = {
        {"seq 1000000",
         {"999991", "999992", "999993", "999994", "999995", "999996", "999997", "999998", "999999",
          "1000000"}},
        {"head -c 1000000 /dev/zero | tr '\\0' x; printf '\\n\\tend\\r\\n'", {"\tend"}},
        {"printf '\\303\\274 \\303 \\377 \\355\\240\\200 \\033[1m \\0 \\177'", {"ü ? ? ??? ?[1m ? ?"}},
        {"head -c 10000000 /dev/zero | tr '\\0' x", {std::string(4096, 'x')}},
    };
    for (const auto& row : rows) {
        WriteProgram("script", std::string("#!/bin/sh\n") + row.body + "\n");
        const ScriptRecord record = Run("script");
        EXPECT_TRUE(Succeeded(record));
        EXPECT_EQ(record.lastLines, row.lastLines) << row.body;
        EXPECT_EQ(Read("shown"), Read("private/pre-script.output"));
    }
}

TEST_F(ScriptRecordTest, BackgroundProgramsDoNotDelayTheRunAndEndWithIt) {
    WriteProgram("script",
                 "#!/bin/sh\ncd \"$(dirname \"$0\")\"\nsh -c 'echo $$ >pid; sleep 20; echo late >late' &\n"
                 "until [ -s pid ]; do sleep 0.02; done\n");
    EXPECT_TRUE(Succeeded(Run("script")));
    EXPECT_TRUE(test::IsRunning(Native("pid")));
    platform::EndStartedPrograms();
    EXPECT_FALSE(test::IsRunning(Native("pid")));
}

TEST_F(ScriptRecordTest, RecorderWithoutSettingsDescribesItself) {
    platform::StartedProgram started =
        platform::StartProgram({.arguments = {VENTRIX_RECORDER}, .outputFile = Native("out")});
    EXPECT_EQ(platform::WaitForProgram(started).exitCode, 2);
    EXPECT_EQ(Read("out"), "ventrix-script is started by ventrix; run ventrix instead\n");
}

}  // namespace
}  // namespace ventrix::desk
