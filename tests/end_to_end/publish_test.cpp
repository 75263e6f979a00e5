// The module as it is shipped, loaded by the desk host, with the real stylesheets behind the names of the
// other clients. Every folder beside this file is one publish: its sources, and what must lie in the output
// folder.
#include <gtest/gtest.h>

#include "desk/clients/dita_ot_client.h"
#include "desk/clients/xslt_client.h"
#include "desk/host/desk_host.h"
#include "support/test_drives.h"

namespace ventrix {
namespace {

namespace fs = std::filesystem;

struct PublishCase {
    const char* folder;    ///< Beside this file.
    const char* document;  ///< In the sources.
    const char* options;
    desk::AnswerValue resultFolder;
};

const PublishCase publishCases[] = {
    {"worked-example", R"(C:\src\press.dita)",
     R"(-useXSLT C:\src\page.xsl -attributes audience -elements uicontrol -addXpath)", R"(C:\out\)"},
    {"small-map", R"(C:\src\maps\guide.ditamap)",
     R"(-useDITAOT -attributes audience,product,platform -elements uicontrol,term -addSourcePath p -sourcePathAttr data-from)",
     R"(C:\out\build-guide.ditamap\\xhtml\maps\)"},
};

void PrintTo(const PublishCase& publish, std::ostream* out) {
    *out << publish.folder;
}

/// A page without the inside of its style element, which is the layout's business.
std::string WithoutStyle(const std::string& page) {
    const auto start = page.find('>', page.find("<style"));
    const auto end = page.find("</style>");
    return end == std::string::npos ? page : page.substr(0, start + 1) + page.substr(end);
}

class EndToEnd : public testing::TestWithParam<PublishCase> {
  protected:
    EndToEnd() : host({.installationFolder = VENTRIX_DATA_FOLDER, .console = {}, .clientCalled = {}}) {
        host.AddClient("QlXSLT", desk::MakeXsltClient(record));
        host.AddClient("Dita OT", desk::MakeDitaOtClient({"builtin", VENTRIX_DATA_FOLDER}, record));
    }

    test::TestDrives drives;
    desk::TransformationRecord record;
    desk::DeskHost host;
};

TEST_P(EndToEnd, OutputIsAsExpected) {
    const PublishCase& publish = GetParam();
    const fs::path folder = fs::path(VENTRIX_END_TO_END_FOLDER) / publish.folder;
    fs::copy(folder / "source", drives.Native(R"(C:\src)"), fs::copy_options::recursive);
    fs::copy(folder / "expected", drives.Native(R"(C:\expected)"), fs::copy_options::recursive);

    ASSERT_EQ(host.LoadModule(VENTRIX_MODULE), "");
    const auto id =
        host.AddDocument(publish.document, desk::ListDocumentFiles(drives.Native(publish.document).string()));
    const std::string arguments = " -docId " + std::to_string(id) + R"( -logFile C:\log.txt )";
    // The module outlives each case's host, whose ids begin anew: only a Validate looks at a known id again.
    EXPECT_EQ(host.CallModule("Validate" + arguments)->front(), desk::AnswerValue(0));
    const auto reply = host.CallModule("Publish" + arguments + R"(-outputFolder C:\out\ )" + publish.options);

    ASSERT_TRUE(reply && reply->size() == 3);
    EXPECT_EQ((*reply)[0], desk::AnswerValue(0));
    EXPECT_EQ((*reply)[1], publish.resultFolder);
    EXPECT_EQ(record.failed, 0) << record.reason;
    EXPECT_EQ(drives.Read(R"(C:\log.txt)").find("Fehler:"), std::string::npos)
        << drives.Read(R"(C:\log.txt)");
    EXPECT_EQ(drives.Tree(R"(C:\out\)"), drives.Tree(R"(C:\expected\)"));
    for (const std::string& file : drives.Tree(R"(C:\expected\)")) {
        // A build log tells times and places of the machine.
        if (!file.ends_with('\\') && !file.ends_with("buildlog-xhtml.txt")) {
            EXPECT_EQ(WithoutStyle(drives.Read(R"(C:\out\)" + file)), drives.Read(R"(C:\expected\)" + file))
                << file;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, EndToEnd, testing::ValuesIn(publishCases), [](const auto& row) {
    std::string name = row.param.folder;
    std::erase(name, '-');
    return name;
});

}  // namespace
}  // namespace ventrix
