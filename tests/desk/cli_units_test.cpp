#include <gtest/gtest.h>

#include "desk/cli/exit_status.h"
#include "desk/cli/published_pages.h"
#include "desk/cli/request_text.h"
#include "desk/cli/run_log.h"
#include "desk/output/output_checks.h"
#include "platform/home_folders.h"
#include "support/test_drives.h"

namespace ventrix::desk {
namespace {

using test::kDriveZ;

TEST(RequestText, ContainsEveryOptionOfTheCommandLine) {
    EXPECT_EQ(PublishRequest({7, {"Z:\\my out\\"}, {}, {}, {}, {}, {}, {"Z:\\a\"b.txt"}, true}, {}),
              "Publish -docId 7 -outputFolder \"Z:\\my out\\\" -useDITAOT -logFile 'Z:\\a\"b.txt'");
    const PublishValues values = {1, {}, {"x"}, {"p"}, {"q"}, {"d"}, {"o"}, {}, false};
    PublishOptions options;
    options.xpath = true;
    options.attributes = {"a,b", "c"};
    options.elements = {"e"};
    options.scopedAttributes = {"1,2,3,4"};
    options.sourcePath = {"s"};
    options.preserveXpath = {"//a"};
    options.targetAttr = "t";
    options.xpathAttr = "xa";
    options.sourcePathAttr = "sa";
    options.preserveXpathAttr = "pa";
    EXPECT_EQ(
        PublishRequest(values, options),
        R"(Publish -docId 1 -useXSLT "x" -usePreScript "p" -usePostScript "q" -ditaval "d" -outFilePath "o")"
        R"( -attributes "a,b" -attributes "c" -elements "e" -scopedAttributes "1,2,3,4" -targetAttr "t")"
        R"( -addXpath -xpathAttr "xa" -addSourcePath "s" -sourcePathAttr "sa" -preserveXPathList "//a")"
        R"( -preserveXPathAttr "pa")");
}

TEST(RequestText, RejectsValuesThatARequestCannotExpress) {
    PublishOptions options;
    options.targetAttr = "a'b\"c";
    EXPECT_THROW(PublishRequest({}, options), Stop);
    options.targetAttr = std::string(1024, 'x');
    EXPECT_THROW(PublishRequest({}, options), Stop);
    options.targetAttr.pop_back();
    EXPECT_NO_THROW(PublishRequest({}, options));
    EXPECT_EQ(FillDocumentId("{docId} -docId {docId}x", 12), "12 -docId 12x");
}

TEST(RequestText, CommandIsReadAsTheModuleReadsIt) {
    for (const char* text : {"Publish -docId 1", "  PUBLISH", "'publish'-docId 1", "\"Publish\" x"}) {
        EXPECT_TRUE(IsRequest(text, "Publish")) << text;
    }
    for (const char* text : {"", "Validate Publish", "Publisher", "'Publish -docId 1", "\tPublish"}) {
        EXPECT_FALSE(IsRequest(text, "Publish")) << text;
    }
}

TEST(RunLogTest, ParsesSectionsWarningsAndFailures) {
    const RunLog log = ReadRunLog(
        "Es wird versucht, alle Dateien zu verpacken, auf die verwiesen wird...\r\n\r\n"
        "Logarithmus:Liste der gültigen Dateien\r\n****\r\nZ:\\a.xml\r\nZ:\\b.xml\r\n****\r\n\r\n"
        "Achtung:Liste der beschädigten Links\r\n****\r\nZ:\\c.png\r\n****\r\n\r\n"
        "Achtung:Liste der ungespeicherten Dateien\r\n****\r\nZ:\\d.xml\r\n****\r\n"
        "Achtung:Einige Dateien, auf die verwiesen wird, befinden sich auf mehreren Laufwerken "
        "und können nicht verpackt werden!\r\n"
        "Logarithmus:Datei wird codiert...Z:\\out\\a.xml\r\nFehler:Datei wird codiert...line 1\r\n"
        "Logarithmus:Datei wird codiert...Z:\\out\\b.xml\r\n"
        "Logarithmus:Datei wird decodiert...Z:\\out\\\\x.html\r\nFehler:Datei wird decodiert...\r\n");
    EXPECT_EQ(log.valid, (std::vector<NativePath>{{kDriveZ + "/a.xml"}, {kDriveZ + "/b.xml"}}));
    EXPECT_EQ(log.broken, std::vector<NativePath>{{kDriveZ + "/c.png"}});
    EXPECT_EQ(log.unsaved, std::vector<NativePath>{{kDriveZ + "/d.xml"}});
    EXPECT_TRUE(log.graphicsOnOtherDrive);
    EXPECT_FALSE(log.documentsOnSeveralDrives);
    EXPECT_EQ(log.encoded, 2U);
    EXPECT_EQ(log.decoded, 1U);
    ASSERT_EQ(log.failed.size(), 2U);
    EXPECT_EQ(log.failed[0].file.utf8, kDriveZ + "/out/a.xml");
    EXPECT_EQ(log.failed[0].reason, "line 1");
    EXPECT_EQ(log.failed[1].file.utf8, kDriveZ + "/out/x.html");
}

TEST(RequestText, OptionIsFoundInAnyCaseAndQuotes) {
    const struct {
        const char* request;
        const char* value;
    } rows[] = {
        {"Publish -docId 1 -outputFolder C:\\out\\ -useDITAOT", "C:\\out\\"},
        {"publish -OUTPUTFOLDER 'C:\\my out\\' -docId 1", "C:\\my out\\"},
        {"Publish -docId 1 -outputFolder \"C:\\o 1\\\"", "C:\\o 1\\"},
        {"Publish \"-outputFolder\" x -docId 1", ""},
        {"Publish -docId 1 -outputFolder", ""},
        {"Publish -elements 'unclosed", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(RequestOption(row.request, "-outputFolder"), row.value) << row.request;
    }
}

// Does not run the program, because a failure would then empty these folders.
TEST(OutputFolder, IsNeverARootOrHomeFolder) {
    const test::TestDrives drives;
    std::vector<std::filesystem::path> folders = platform::HomeFolders();
    std::erase_if(folders, [](const auto& folder) { return !std::filesystem::exists(folder); });
    ASSERT_FALSE(folders.empty());
    folders.emplace_back(kDriveZ + "/");
    folders.push_back(drives.Native("C:").parent_path());
    for (const std::filesystem::path& folder : folders) {
        EXPECT_FALSE(WhyNeverAllowed(folder, {}).empty()) << folder;
    }
}

TEST(PublishedPagesTest, CountsMarkerTextInTextNodesAndAttributeValues) {
    const test::TestFolder folder;
    folder.Write("a.html",
                 "<html><head><meta name='d' content=\"QL_STARTx>y\"/></head><p "
                 "data-twtags=\"aQL_SEPb\">t</p></html>");
    folder.Write("sub/b.htm", "<p title='QL_ELEM_S'>QL_SA_S</p>");
    folder.Write("c.txt", "<p title='QL_ELEM_S'>");
    PublishedPages pages;
    InspectPages({folder.Native()}, pages);
    EXPECT_EQ(pages.files.size(), 2U);
    EXPECT_EQ(pages.markedValues, 2U);
    EXPECT_EQ(pages.firstMarkedValue, folder.Native("a.html") + ": <meta content>");
    EXPECT_EQ(pages.markedTexts, std::vector<NativePath>{{folder.Native("sub/b.htm")}});
    InspectPages({folder.Native("c.txt")}, pages);
    EXPECT_EQ(pages.markedValues, 3U) << "a single file counts whatever its name";
}

}  // namespace
}  // namespace ventrix::desk
