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
};

TEST_F(Scripts, ReceiveTheDocumentAsTheirOnlyArgument) {
    for (const char* script : {R"(C:\s.sh)", R"(C:\my scripts\über uns.sh)"}) {
        drives.WriteScript(script, "printf '%s|' $# \"$1\"; cat; exit 3\n");
        const std::string document = R"(C:\out folder\grün.xml)";
        drives.Write(document, "");
        EXPECT_EQ(OutputOf(script, document), "1|" + drives.Native(document).string() + "|")
            << "standard input is empty, and the exit code is ignored";
    }
}

TEST_F(Scripts, PrintOneLineIfTheyCannotBeStarted) {
    drives.Write(R"(C:\plain.txt)", "not executable");
    EXPECT_EQ(OutputOf(R"(C:\missing.sh)", "d"), "CreateProcess failed (2)\n");
    EXPECT_EQ(OutputOf(R"(C:\no\folder\s.sh)", "d"), "CreateProcess failed (3)\n");
    EXPECT_EQ(OutputOf(R"(C:\plain.txt)", "d"), "CreateProcess failed (5)\n");
}

TEST_F(Scripts, RunBeforeAndAfterTheTransformation) {
    referenceCache = {};
    drives.Write(R"(C:\src\a.dita)", "<topic/>");
    const std::string trace = drives.Native(R"(C:\trace.txt)").string();
    drives.WriteScript(R"(C:\pre.sh)", "test -s \"$1\" && echo pre >> '" + trace + "'\n");
    drives.WriteScript(R"(C:\post.sh)",
                       "test -s \"$1\" && echo post >> '" + trace + "'; echo '<p/>' > \"$1.html\"\n");
    host.documents[7] = {R"(C:\src\a.dita)", {Document(R"(C:\src\a.dita)")}};
    host.onClient = [&](const std::string&) {
        drives.Write(R"(C:\trace.txt)", drives.Read(R"(C:\trace.txt)") + "transform\n");
    };
    const std::string request =
        R"(Publish -docId 7 -outputFolder C:\out\ -logFile C:\l.txt -usePostScript C:\post.sh)";
    host.Request(request + R"( -usePreScript C:\pre.sh -useXSLT C:\x.xsl)");
    EXPECT_EQ(drives.Read(R"(C:\trace.txt)"), "pre\ntransform\npost\n");
    EXPECT_EQ(drives.Tree(R"(C:\out\)"), std::vector<std::string>{"a.dita.html"});

    host.Request(request);
    EXPECT_EQ(drives.Read(R"(C:\trace.txt)"), "pre\ntransform\npost\npost\n")
        << "a request may name only a script";
}

}  // namespace
}  // namespace ventrix::test
