#include "platform/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "platform/command_line.h"
#include "platform/environment.h"
#include "support/environment.h"
#include "support/test_folder.h"

using namespace ventrix::platform;
using ventrix::test::TestFolder;
namespace fs = std::filesystem;

namespace {

using Texts = std::vector<std::string>;

TEST(CommandLine, IsSplitByThePlatformsRules) {
    const struct {
        const char *name, *text;
        Texts arguments;
    } rows[] = {
        {"script and document",
         R"("C:\my scripts\pre.sh" "C:\out\a b.xml")",
         {R"(C:\my scripts\pre.sh)", R"(C:\out\a b.xml)"}},
        {"unquoted", "  run\ta  b ", {"run", "a", "b"}},
        {"nothing is escaped in the program", R"("C:\bin\" x)", {R"(C:\bin\)", "x"}},
        {"text directly after the program", R"("a"b c)", {"a", "b", "c"}},
        {"program without its closing quote", R"("a b)", {"a b"}},
        {"empty program", R"("" x)", {"", "x"}},
        {"empty argument", R"(p "" x)", {"p", "", "x"}},
        {"quote in the middle", R"(p a" b "c)", {"p", "a b c"}},
        {"backslashes before a letter", R"(p a\\b)", {"p", R"(a\\b)"}},
        {"backslashes before a quote", R"(p "a\\" b)", {"p", R"(a\)", "b"}},
        {"escaped quote", R"(p a\"b c)", {"p", R"(a"b)", "c"}},
        {"odd run before a quote", R"(p "a\\\"b" c)", {"p", R"(a\"b)", "c"}},
        {"closing backslash escapes the quote", R"(p "C:\a\" b)", {"p", R"(C:\a" b)"}},
        {"two quotes in quotes", R"(p "a""b c")", {"p", R"(a"b c)"}},
        {"backslash at the end", R"(p a\)", {"p", R"(a\)"}},
        {"whitespace", " \t ", {}},
        {"empty", "", {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(SplitCommandLine(row.text), row.arguments) << row.name;
    }
}

TEST(CommandLine, PathsReachTheProgramInNativeNotation) {
    const DriveTable drives = ParseDrives("C=/srv/c");
    EXPECT_EQ(NativeArguments(drives, {R"(C:\pre.sh)", R"(C:\a b.xml)", "/native", R"(Q:\unknown)",
                                       R"(\\no\server)", R"(s\d+)", "C:x", "-o"}),
              (Texts{"/srv/c/pre.sh", "/srv/c/a b.xml", "/native", R"(Q:\unknown)", R"(\\no\server)",
                     R"(s\d+)", "C:x", "-o"}));
    EXPECT_EQ(NativeArguments(drives, {R"(scripts\pre.sh)"}), (Texts{"scripts/pre.sh"}));
    EXPECT_EQ(NativeArguments(drives, {R"(Q:\pre.sh)"}), (Texts{""}));
    EXPECT_EQ(NativeArguments(drives, {}), Texts{});
}

/// Starts a program of the tree with one argument. Returns its exit code, or the negative error code.
int ExitOf(const TestFolder& tree, const std::string& name, const std::string& argument = "x") {
    ProcessHandle process;
    const ErrorCode error = StartProcess("\"" + tree.System(name) + "\" \"" + argument + "\"", process);
    EXPECT_EQ(process.id != 0, error == kErrorNone);
    return error != kErrorNone ? -static_cast<int>(error) : WaitForProcess(process);
}

TEST(StartProcess, ScriptsReceiveTheDocumentInNativeNotation) {
    const TestFolder tree;
    const std::string body = "printf '%s|%s' \"$#\" \"$1\" >\"$(dirname \"$0\")/out\"\nexit 7\n";
    tree.WriteProgram("with line/a b.sh", "#!/bin/sh\n" + body);
    tree.WriteProgram("without line.sh", body);
    const std::string document = tree.System("doc ument.xml");
    EXPECT_EQ(ExitOf(tree, "with line/a b.sh", document), 7);
    EXPECT_EQ(tree.Read("with line/out"), "1|" + tree.Native("doc ument.xml"));
    EXPECT_EQ(ExitOf(tree, "without line.sh", document), 7);
    EXPECT_EQ(tree.Read("out"), "1|" + tree.Native("doc ument.xml"));
}

TEST(StartProcess, ProgramInheritsEnvironmentAndFolderButNoOpenFiles) {
    const TestFolder tree;
    tree.WriteProgram(
        "true", "#!/bin/sh\ncat\npwd >\"$1\"\necho \"$VENTRIX_PROBE\" >>\"$1\"\n[ ! -e /proc/self/fd/77 ]\n");
    SetEnvironmentValue("VENTRIX_PROBE", "from the host");
    const int open = ::fcntl(STDERR_FILENO, F_DUPFD, 77);
    ASSERT_EQ(open, 77);
    const fs::path before = fs::current_path();
    fs::current_path(tree.Native(""));
    ProcessHandle process;
    EXPECT_EQ(StartProcess("true out", process), kErrorNone);
    EXPECT_EQ(WaitForProcess(process), 0);
    fs::current_path(before);
    ::close(open);
    ventrix::test::RemoveVariable("VENTRIX_PROBE");
    EXPECT_EQ(tree.Read("out"), tree.Native("") + "\nfrom the host\n");
    EXPECT_EQ(WaitForProcess(process), -1);
}

TEST(StartProcess, FailuresGiveThePlatformsErrorCodes) {
    const TestFolder tree;
    tree.Write("not executable", "#!/bin/sh\n");
    tree.WriteProgram("binary", std::string("\x7F"
                                            "ELF\0\0\0\0garbage",
                                            15));
    tree.WriteProgram("empty", "");
    tree.WriteProgram("lost interpreter", "#!/no/such/interpreter\n");
    // A signal that the host ignores still ends a script.
    std::signal(SIGPIPE, SIG_IGN);
    tree.WriteProgram("reader gone", "#!/bin/sh\nkill -PIPE $$\n");
    tree.WriteProgram("killed", "#!/bin/sh\nkill -TERM $$\n");
    EXPECT_EQ(ExitOf(tree, "none"), -2);
    EXPECT_EQ(ExitOf(tree, "none/none"), -3);
    EXPECT_EQ(ExitOf(tree, ""), -5);
    EXPECT_EQ(ExitOf(tree, "not executable"), -5);
    EXPECT_EQ(ExitOf(tree, "binary"), -193);
    EXPECT_EQ(ExitOf(tree, "empty"), -193);
    EXPECT_EQ(ExitOf(tree, "lost interpreter"), -2);
    EXPECT_EQ(ExitOf(tree, "killed"), 128 + 15);
    EXPECT_EQ(ExitOf(tree, "reader gone"), 128 + 13);
    ProcessHandle process;
    EXPECT_EQ(StartProcess("", process), kErrorInvalidParameter);
    EXPECT_EQ(StartProcess(R"("Q:\no\drive" x)", process), kErrorPathNotFound);
    EXPECT_EQ(StartProcess(R"("" x)", process), kErrorPathNotFound);
    EXPECT_EQ(StartProcess("ventrix-no-such-program", process), kErrorFileNotFound);
    EXPECT_EQ(StartProcess("true", process), kErrorNone);
    EXPECT_EQ(WaitForProcess(process), 0);
}

}  // namespace
