#include "pipeline/scripts.h"

#include <gtest/gtest.h>

#include "pipeline/reference_scan.h"
#include "support/linked_host.h"
#include "support/test_drives.h"

namespace ventrix {
namespace {

class Scripts : public testing::Test {
  protected:
    void WriteScript(const std::string& path, const std::string& body) {
        drives.Write(path, "#!/bin/sh\n" + body);
        std::filesystem::permissions(drives.Native(path), std::filesystem::perms::owner_all);
    }

    static std::string OutputOf(const std::string& script, const std::string& document) {
        testing::internal::CaptureStdout();
        RunScript(script, document);
        return testing::internal::GetCapturedStdout();
    }

    test::TestDrives drives;
};

TEST_F(Scripts, GetTheDocumentAsTheirOneArgument) {
    for (const char* script : {R"(C:\s.sh)", R"(C:\my scripts\über uns.sh)"}) {
        WriteScript(script, "printf '%s|' $# \"$1\"; cat; exit 3\n");
        const std::string document = R"(C:\out folder\grün.xml)";
        drives.Write(document, "");
        EXPECT_EQ(OutputOf(script, document), "1|" + drives.Native(document).string() + "|")
            << "standard input is empty, and the exit code counts for nothing";
    }
}

TEST_F(Scripts, ThatCannotStartLeaveOneLine) {
    drives.Write(R"(C:\plain.txt)", "not executable");
    EXPECT_EQ(OutputOf(R"(C:\missing.sh)", "d"), "CreateProcess failed (2)\n");
    EXPECT_EQ(OutputOf(R"(C:\no\folder\s.sh)", "d"), "CreateProcess failed (3)\n");
    EXPECT_EQ(OutputOf(R"(C:\plain.txt)", "d"), "CreateProcess failed (5)\n");
}

TEST_F(Scripts, StandAroundTheTransformationAndBeforeTheDeletion) {
    referenceCache = {};
    drives.Write(R"(C:\src\a.dita)", "<topic/>");
    const std::string trace = drives.Native(R"(C:\trace.txt)").string();
    WriteScript(R"(C:\pre.sh)", "test -s \"$1\" && echo pre >> '" + trace + "'\n");
    WriteScript(R"(C:\post.sh)",
                "test -s \"$1\" && echo post >> '" + trace + "'; echo '<p/>' > \"$1.html\"\n");
    test::LinkedHost host;
    host.documents[7] = {R"(C:\src\a.dita)", {test::Document(R"(C:\src\a.dita)")}};
    host.onClient = [&](const std::string&, const std::string&) {
        drives.Write(R"(C:\trace.txt)", drives.Read(R"(C:\trace.txt)") + "transform\n");
    };
    const std::string request =
        R"(Publish -docId 7 -outputFolder C:\out\ -logFile C:\l.txt -usePostScript C:\post.sh)";
    EXPECT_TRUE(host.Request(request + R"( -usePreScript C:\pre.sh -useXSLT C:\x.xsl)"));
    EXPECT_EQ(drives.Read(R"(C:\trace.txt)"), "pre\ntransform\npost\n");
    EXPECT_EQ(drives.Tree(R"(C:\out\)"), std::vector<std::string>{"a.dita.html"});

    EXPECT_TRUE(host.Request(request)) << "a script alone is a whole request";
    EXPECT_EQ(drives.Read(R"(C:\trace.txt)"), "pre\ntransform\npost\npost\n");
}

}  // namespace
}  // namespace ventrix
