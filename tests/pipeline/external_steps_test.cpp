#include "pipeline/external_steps.h"

#include "support/module_test.h"

namespace ventrix::test {
namespace {

class Scripts : public ModuleTest {
  protected:
    static std::string OutputOf(const std::string& script, const std::string& document) {
        testing::internal::CaptureStdout();
        RunScript(script, document);
        return testing::internal::GetCapturedStdout();
    }

    TestDrives drives{TestDrives::For::kLibraries};  // Scripts are not part of this program.
};

TEST_F(Scripts, ReceiveTheDocumentAsTheirOnlyArgument) {
    for (const char* name : {R"(C:\s)", R"(C:\my scripts\über uns)"}) {
        const std::string script = drives.Seen(ScriptFile(name));
        drives.WriteScript(script, "append $#|$1| $here/received\ninput\nexit 3\n");
        const std::string document = drives.Seen(R"(C:\out folder\grün.xml)");
        drives.Write(document, "");
        EXPECT_EQ(OutputOf(script, document), "") << "standard input is empty, and the exit code is ignored";
        const std::string received = script.substr(0, script.rfind('\\')) + R"(\received)";
        const std::string shown = kHasShell ? platform::ToNative(document) : document;
        EXPECT_EQ(drives.Read(received), "1|" + shown + "|\n");
    }
}

TEST_F(Scripts, PrintOneLineIfTheyCannotBeStarted) {
    drives.Write(R"(C:\plain.txt)", "not executable");
    const char* notExecutable = kHasShell ? "CreateProcess failed (5)\n" : "CreateProcess failed (193)\n";
    EXPECT_EQ(OutputOf(drives.Seen(R"(C:\missing.sh)"), "d"), "CreateProcess failed (2)\n");
    EXPECT_EQ(OutputOf(drives.Seen(R"(C:\no\folder\s.sh)"), "d"),
              kHasShell ? "CreateProcess failed (3)\n" : "CreateProcess failed (2)\n");
    EXPECT_EQ(OutputOf(drives.Seen(R"(C:\plain.txt)"), "d"), notExecutable);
}

TEST_F(Scripts, RunBeforeAndAfterTheTransformation) {
    referenceCache = {};
    drives.Write(R"(C:\src\a.dita)", "<topic/>");
    const std::string pre = drives.Seen(ScriptFile(R"(C:\pre)"));
    const std::string post = drives.Seen(ScriptFile(R"(C:\post)"));
    drives.WriteScript(pre, "copy $1 $here/at-pre\nappend pre $here/trace.txt\n");
    drives.WriteScript(post, "copy $1 $1.html\nappend post $here/trace.txt\n");
    const std::string document = drives.Seen(R"(C:\src\a.dita)");
    host.documents[7] = {document, {Document(document)}};
    host.onClient = [&](const std::string&) {
        drives.Write(R"(C:\trace.txt)", drives.Read(R"(C:\trace.txt)") + "transform\n");
    };
    const std::string request =
        drives.Seen(R"(Publish -docId 7 -outputFolder C:\out\ -logFile C:\l.txt -usePostScript )") + post;
    host.Request(request + " -usePreScript " + pre + drives.Seen(R"( -useXSLT C:\x.xsl)"));
    EXPECT_EQ(drives.Read(R"(C:\trace.txt)"), "pre\ntransform\npost\n");
    EXPECT_EQ(drives.Read(R"(C:\at-pre)"), "<topic/>");
    EXPECT_EQ(drives.Tree(R"(C:\out\)"), std::vector<std::string>{"a.dita.html"});

    std::filesystem::remove(drives.Native(R"(C:\out\a.dita.html)"));
    host.Request(request);
    EXPECT_EQ(drives.Read(R"(C:\trace.txt)"), "pre\ntransform\npost\npost\n")
        << "a request may name only a script";
}

}  // namespace
}  // namespace ventrix::test
