#include "desk/script/script_record.h"

#include <fcntl.h>
#include <unistd.h>

#include "desk/folder_fixture.h"
#include "platform/child_process.h"
#include "platform/process.h"
#include "support/child.h"
#include "support/links.h"
#include "support/scripts.h"

namespace ventrix::desk {
namespace {

class ScriptRecordTest : public FolderFixture {
  protected:
    ScriptRecordTest() { platform::OwnStartedPrograms(); }
    ~ScriptRecordTest() override {
        platform::EndStartedPrograms();
        close(shown_);
    }

    /// Prepares the script and starts it as the module does, with `shown` as the standard output.
    platform::ProcessHandle Start(const std::string& script) {
        std::filesystem::remove_all(Native("private"));
        std::filesystem::create_directory(Native("private"));
        close(shown_);
        shown_ = open(Native("shown").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const std::string path = PrepareScript(
            Native("private"), kPreScript, VENTRIX_RECORDER,
            {Native(script), Native("package"), platform::ProcessId(), false, test::PassedOutput(shown_)});
        platform::ProcessHandle process;
        const std::string command =
            "\"" + platform::ToSystem(path).value() + "\" \"" + System("package/d ö.xml") + "\"";
        const int output = dup(STDOUT_FILENO);
        dup2(shown_, STDOUT_FILENO);
        EXPECT_EQ(platform::StartProcess(command, process), platform::kErrorNone);
        dup2(output, STDOUT_FILENO);
        close(output);
        return process;
    }
    ScriptRecord Run(const std::string& script) {
        platform::ProcessHandle process = Start(script);
        platform::WaitForProcess(process);
        return Record();
    }
    ScriptRecord Record() { return ReadScriptRecord(Native("private"), kPreScript); }

    int shown_ = dup(STDOUT_FILENO);  ///< A file; one that is open even before the first script starts.
};

TEST_F(ScriptRecordTest, DescribesHowAScriptEnded) {
    WriteScript(*this, "fine", "input\n");
    WriteScript(*this, "three", "print out\ncomplain err\nexit 3\n");
    WriteScript(*this, "killed", "print before\nsignal 9\n");
    Write("garbage.exe", std::string("\x7F"
                                     "ELF\0\0\0\0garbage",
                                     15));
    std::filesystem::permissions(Native("garbage.exe"), std::filesystem::perms::owner_all);
    WriteProgram("lost", "#!/no/such/interpreter\n");
    Write("plain", "#!/bin/sh\n");
    struct Row {
        std::string script;
        ScriptState state;
        std::string failure;  ///< After the script's path.
        std::vector<std::string> lastLines;
    };
    std::vector<Row> rows = {
        {test::ScriptFile("fine"), ScriptState::kEnded, "", {}},
        {test::ScriptFile("three"), ScriptState::kEnded, " failed with exit status 3", {"out", "err"}},
        {"garbage.exe", ScriptState::kNotStarted, " is not a program that this system can run", {}},
    };
    if (test::kHasShell) {
        rows.push_back({"killed", ScriptState::kEnded, " was terminated by signal 9", {"before"}});
        rows.push_back({"lost",
                        ScriptState::kNotStarted,
                        " cannot be started: its interpreter /no/such/interpreter does not exist",
                        {}});
        rows.push_back({"plain",
                        ScriptState::kNotStarted,
                        " cannot be started: the file or its interpreter is not executable",
                        {}});
    }
    for (const Row& row : rows) {
        const ScriptRecord record = Run(row.script);
        EXPECT_EQ(record.state, row.state) << row.script;
        EXPECT_EQ(record.lastLines, row.lastLines) << row.script;
        EXPECT_EQ(Succeeded(record), row.failure.empty()) << row.script;
        EXPECT_EQ(DescribeFailure(record, Native(row.script)),
                  row.failure.empty() ? "" : Native(row.script) + row.failure);
    }
}

TEST_F(ScriptRecordTest, DistinguishesAScriptThatWasNotCalledFromALostRecord) {
    WriteScript(*this, "waits", "print begun\nnumber $here/pid\nsleep 20\n");
    platform::ProcessHandle process = Start(test::ScriptFile("waits"));
    ASSERT_TRUE(test::Eventually([&] { return test::IsRunning(Native("pid")); }));
    test::KillStarted(process);
    platform::WaitForProcess(process);
    EXPECT_EQ(Record().state, ScriptState::kUnknown);
    EXPECT_EQ(Record().lastLines, std::vector<std::string>{"begun"});
    EXPECT_NE(DescribeFailure(Record(), "waits"), "");

    platform::EndStartedPrograms();  // Windows removes no file that is open.
    std::filesystem::remove_all(Native("private"));
    std::filesystem::create_directory(Native("private"));
    PrepareScript(Native("private"), kPreScript, VENTRIX_RECORDER, {Native("waits"), "", 1});
    EXPECT_EQ(Record().state, ScriptState::kNotCalled);
    EXPECT_EQ(DescribeFailure(Record(), "waits"), "waits was not called");
}

TEST_F(ScriptRecordTest, ScriptGetsTheDocumentAndItsOwnNameAndThePackageIsNotedBefore) {
    Write("package/d ö.xml", "<d/>");
    const std::string picture = test::kHasShell ? "img/a\nb.png" : "img/a b.png";
    Write("package/" + picture, "12345");
    test::MakeLink("..", Native("package/up"));
    WriteScript(*this, "script", "print $0\nprint $#\nprint $1\noverwrite changed $1\n");
    const auto now = std::filesystem::file_time_type::clock::now();
    std::filesystem::last_write_time(platform::PathFromUtf8(Native("package/d ö.xml")),
                                     now - std::chrono::hours(1));
    const std::vector<PackageFile> before = ListPackage(Native("package"));
    const ScriptRecord record = Run(test::ScriptFile("script"));
    const std::string script = test::ScriptFile("script");
    const std::string document = "package/d ö.xml";
    EXPECT_EQ(record.lastLines, test::kHasShell
                                    ? (std::vector<std::string>{Native(script), "1", Native(document)})
                                    : (std::vector<std::string>{System(script), "1", System(document)}));
    ASSERT_EQ(record.package.size(), 2U);
    EXPECT_EQ(record.package[1].name, picture);
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
        {"count 1000000",
         {"999991", "999992", "999993", "999994", "999995", "999996", "999997", "999998", "999999",
          "1000000"}},
        {"fill 1000000 x\nput \\n\\tend\\r\\n", {"\tend"}},
        {"put \\xc3\\xbc \\xc3 \\xff \\xed\\xa0\\x80 \\x1b[1m \\x00 \\x7f", {"ü ? ? ??? ?[1m ? ?"}},
        {"fill 10000000 x", {std::string(4096, 'x')}},
    };
    for (const auto& row : rows) {
        WriteScript(*this, "script", std::string(row.body) + "\n");
        const ScriptRecord record = Run(test::ScriptFile("script"));
        EXPECT_TRUE(Succeeded(record));
        EXPECT_EQ(record.lastLines, row.lastLines) << row.body;
        EXPECT_EQ(Read("shown"), Read("private/pre-script.output"));
    }
}

TEST_F(ScriptRecordTest, BackgroundProgramsDoNotDelayTheRunAndEndWithIt) {
    Write("background", test::ScriptWith("number $here/pid\nsleep 20\n"));
    WriteScript(*this, "script", "start $here/background\nawait $here/pid\n");
    EXPECT_TRUE(Succeeded(Run(test::ScriptFile("script"))));
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
