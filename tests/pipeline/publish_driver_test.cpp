// Publish requests against a scripted host: what the module asks of it, replies, logs and leaves on disk.
#include "pipeline/publish_driver.h"

#include <gtest/gtest.h>

#include "pipeline/reference_scan.h"
#include "support/linked_host.h"
#include "support/log_lines.h"
#include "support/test_drives.h"

namespace ventrix {
namespace {

using test::operator+;
using test::Document;
using test::Graphic;
using test::Heading;
using test::HostReply;
using test::Lines;
using Strings = std::vector<std::string>;
using FilesWritten = std::vector<std::pair<std::string, std::string>>;

constexpr char pageText[] = "<html><body><p>x</p></body></html>";
constexpr char topicText[] = "<topic><p/></topic>";

/// One request for document 7, into C:\out\, with the log C:\log.txt.
struct PublishRow {
    std::string name;
    test::HostDocument document;
    std::string options;
    FilesWritten clientWrites;  ///< By any client that is called.
    HostReply reply;
    Strings calls;
    Lines log;
    Strings tree;  ///< Of C:\out\ at the end.
};

class PublishRequests : public testing::TestWithParam<PublishRow> {
  protected:
    void SetUp() override {
        referenceCache = {};
        drives.Write(R"(C:\out\old\page.html)", "from an earlier run");
        for (const char* path : {R"(C:\src\guide.ditamap)", R"(C:\src\a.dita)", R"(C:\src\sub\b.dita)",
                                 R"(C:\src\maps\deep.ditamap)"}) {
            drives.Write(path, topicText);
        }
        drives.Write(R"(C:\src\bad.dita)", "<topic>");
        drives.Write(R"(C:\src\img\p.png)", "png");
        drives.Write(R"(D:\far.png)", "png");
    }

    test::TestDrives drives;
    test::LinkedHost host;
};

Lines Encoded(const Strings& files) {
    Lines lines = Heading(test::encodeHeading);
    for (const std::string& file : files) {
        lines.push_back("Logarithmus:Datei wird codiert..." + file);
    }
    return lines;
}

Lines Decoded(const Strings& files) {
    Lines lines = Heading(test::decodeHeading);
    for (const std::string& file : files) {
        lines.push_back("Logarithmus:Datei wird decodiert..." + file);
    }
    return lines;
}

Lines DitaRun(const std::string& input, const std::string& ditaval) {
    return {"", "Logarithmus:DITA_OT wird ausgeführt...", test::ruleLine, "Eingabedatei:" + input,
            "DITAVAL-Datei:" + ditaval};
}

const test::HostDocument flatDocument = {
    R"(C:\src\guide.ditamap)",
    {Document(R"(C:\src\guide.ditamap)"), Document(R"(C:\src\a.dita)"), Graphic(R"(C:\src\img\p.png)")}};
const test::HostDocument deepDocument = {
    R"(C:\src\maps\deep.ditamap)", {Document(R"(C:\src\maps\deep.ditamap)"), Graphic(R"(C:\src\img\p.png)")}};

const PublishRow publishRows[] = {
    {"DitaRunOfAFlatDocument",
     flatDocument,
     R"(-useDITAOT -ditaval "C:\my web.ditaval" -useXSLT C:\ignored.xsl)",
     {{R"(C:\out\build-guide.ditamap\xhtml\index.html)", pageText},
      {R"(C:\out\build-guide.ditamap\buildlog-xhtml.txt)", "ok"}},
     {3, 0, R"(C:\out\build-guide.ditamap\\xhtml\)", R"(C:\out\build-guide.ditamap\\buildlog-xhtml.txt)"},
     {"list 7 16 0", R"(open C:\out\guide.ditamap)",
      R"(Dita OT: Save -docId 4711 -transtype xhtml -filter "C:\my web.ditaval" -outFilePath "C:\out\build-guide.ditamap\")",
      "close 4711 1"},
     Encoded({R"(C:\out\guide.ditamap)", R"(C:\out\a.dita)"}) +
         DitaRun(R"(C:\out\guide.ditamap)", R"(C:\my web.ditaval)") +
         Decoded({R"(C:\out\\build-guide.ditamap\xhtml\index.html)"}),
     {"build-guide.ditamap\\", "build-guide.ditamap\\buildlog-xhtml.txt", "build-guide.ditamap\\xhtml\\",
      "build-guide.ditamap\\xhtml\\img\\", "build-guide.ditamap\\xhtml\\img\\p.png",
      "build-guide.ditamap\\xhtml\\index.html", "img\\", "img\\p.png"}},

    {"DitaRunMirrorsTheDepthOfTheDocument",
     deepDocument,
     "-useDITAOT",
     {{R"(C:\out\build-deep.ditamap\xhtml\index.html)", pageText},
      {R"(C:\out\build-deep.ditamap\xhtml\sub\b.html)", pageText}},
     {3, 0, R"(C:\out\build-deep.ditamap\\xhtml\maps\)", R"(C:\out\build-deep.ditamap\\buildlog-xhtml.txt)"},
     {"list 7 16 0", R"(open C:\out\maps\deep.ditamap)",
      R"(Dita OT: Save -docId 4711 -transtype xhtml -outFilePath "C:\out\build-deep.ditamap\")",
      "close 4711 1"},
     Encoded({R"(C:\out\maps\deep.ditamap)"}) + DitaRun(R"(C:\out\maps\deep.ditamap)", "") +
         Decoded({R"(C:\out\\build-deep.ditamap\xhtml\index.html)",
                  R"(C:\out\\build-deep.ditamap\xhtml\sub\b.html)"}),
     {"build-deep.ditamap\\", "build-deep.ditamap\\xhtml\\", "build-deep.ditamap\\xhtml\\img\\",
      "build-deep.ditamap\\xhtml\\img\\p.png", "build-deep.ditamap\\xhtml\\maps\\",
      "build-deep.ditamap\\xhtml\\maps\\index.html", "build-deep.ditamap\\xhtml\\maps\\sub\\",
      "build-deep.ditamap\\xhtml\\maps\\sub\\b.html", "build-deep.ditamap\\xhtml\\sub\\", "img\\",
      "img\\p.png"}},

    {"AnExistingFolderOfTheDocumentsDepthIsLeftAlone",
     deepDocument,
     "-useDITAOT",
     {{R"(C:\out\build-deep.ditamap\xhtml\index.html)", pageText},
      {R"(C:\out\build-deep.ditamap\xhtml\maps\own.html)", pageText}},
     {3, 0, R"(C:\out\build-deep.ditamap\\xhtml\maps\)", R"(C:\out\build-deep.ditamap\\buildlog-xhtml.txt)"},
     {"list 7 16 0", R"(open C:\out\maps\deep.ditamap)",
      R"(Dita OT: Save -docId 4711 -transtype xhtml -outFilePath "C:\out\build-deep.ditamap\")",
      "close 4711 1"},
     Encoded({R"(C:\out\maps\deep.ditamap)"}) + DitaRun(R"(C:\out\maps\deep.ditamap)", "") +
         Decoded({R"(C:\out\\build-deep.ditamap\xhtml\index.html)",
                  R"(C:\out\\build-deep.ditamap\xhtml\maps\own.html)"}),
     {"build-deep.ditamap\\", "build-deep.ditamap\\xhtml\\", "build-deep.ditamap\\xhtml\\img\\",
      "build-deep.ditamap\\xhtml\\img\\p.png", "build-deep.ditamap\\xhtml\\index.html",
      "build-deep.ditamap\\xhtml\\maps\\", "build-deep.ditamap\\xhtml\\maps\\own.html", "img\\",
      "img\\p.png"}},

    {"AClientThatWritesNothingLeavesAFolderForADeepDocument",
     {R"(C:\src\maps\deep.ditamap)", {Document(R"(C:\src\maps\deep.ditamap)"), Document(R"(C:\src\a.dita)")}},
     "-useDITAOT",
     {},
     {3, 0, R"(C:\out\build-deep.ditamap\\xhtml\maps\)", R"(C:\out\build-deep.ditamap\\buildlog-xhtml.txt)"},
     {"list 7 16 0", R"(open C:\out\maps\deep.ditamap)",
      R"(Dita OT: Save -docId 4711 -transtype xhtml -outFilePath "C:\out\build-deep.ditamap\")",
      "close 4711 1"},
     Encoded({R"(C:\out\maps\deep.ditamap)", R"(C:\out\a.dita)"}) +
         DitaRun(R"(C:\out\maps\deep.ditamap)", "") + Decoded({}),
     {"build-deep.ditamap\\", "build-deep.ditamap\\xhtml\\", "build-deep.ditamap\\xhtml\\maps\\"}},

    {"AClientThatWritesNothingLeavesNoneForAFlatOne",
     {R"(C:\src\a.dita)", {Document(R"(C:\src\a.dita)")}},
     "-useDITAOT",
     {},
     {3, 0, R"(C:\out\build-a.dita\\xhtml\)", R"(C:\out\build-a.dita\\buildlog-xhtml.txt)"},
     {"list 7 16 0", R"(open C:\out\a.dita)",
      R"(Dita OT: Save -docId 4711 -transtype xhtml -outFilePath "C:\out\build-a.dita\")", "close 4711 1"},
     Encoded({R"(C:\out\a.dita)"}) + DitaRun(R"(C:\out\a.dita)", "") + Decoded({}),
     {}},

    {"DitaRunIntoAFolderOfTheRequestIsNeitherMadeNorDecoded",
     {R"(C:\src\a.dita)", {Document(R"(C:\src\a.dita)")}},
     R"(-useDITAOT -outFilePath C:\else\x)",
     {{R"(C:\else\x\xhtml\a.html)", pageText}},
     {3, 0, R"(C:\else\x\\xhtml\)", R"(C:\else\x\\buildlog-xhtml.txt)"},
     {"list 7 16 0", R"(open C:\out\a.dita)",
      R"(Dita OT: Save -docId 4711 -transtype xhtml -outFilePath "C:\else\x")", "close 4711 1"},
     Encoded({R"(C:\out\a.dita)"}) + DitaRun(R"(C:\out\a.dita)", "") + Decoded({}),
     {}},

    {"StylesheetWithItsOwnOutputFile",
     flatDocument,
     R"(-useXSLT "C:\my styles\web.xsl" -outFilePath C:\out\pages\guide.htm)",
     {{R"(C:\out\pages\guide.htm)", pageText}, {R"(C:\out\pages\CAPITALS.HTML)", pageText}},
     {3, 0, R"(C:\out\)", ""},
     {"list 7 16 0",
      R"(QlXSLT: XSLTRunTrScenario -dontuseqlconsole -file "C:\out\guide.ditamap" -xslfilepath "C:\my styles\web.xsl" -outputfilepath "C:\out\pages\guide.htm")"},
     Encoded({R"(C:\out\guide.ditamap)", R"(C:\out\a.dita)"}) + Decoded({R"(C:\out\\pages\guide.htm)"}),
     {"img\\", "img\\p.png", "pages\\", "pages\\CAPITALS.HTML", "pages\\guide.htm"}},

    {"StylesheetOnADeepDocumentMovesTheResultOneLevelFurther",
     deepDocument,
     R"(-useXSLT C:\web.xsl)",
     {{R"(C:\out\maps\deep.html)", pageText}},
     {3, 0, R"(C:\out\maps\maps\)", ""},
     {"list 7 16 0",
      R"(QlXSLT: XSLTRunTrScenario -dontuseqlconsole -file "C:\out\maps\deep.ditamap" -xslfilepath "C:\web.xsl" -outputfilepath "C:\out\maps\deep.html")"},
     Encoded({R"(C:\out\maps\deep.ditamap)"}) + Decoded({R"(C:\out\\maps\deep.html)"}),
     {"img\\", "img\\p.png", "maps\\", "maps\\img\\", "maps\\img\\p.png", "maps\\maps\\",
      "maps\\maps\\deep.html"}},

    {"AFileThatDoesNotLoadHasItsLineAndStopsNothing",
     {R"(C:\src\a.dita)",
      {Document(R"(C:\src\bad.dita)"), Document(R"(C:\src\a.dita)"), Document("http://x/y.dita")}},
     R"(-useXSLT C:\web.xsl)",
     {{R"(C:\out\a.html)", pageText}, {R"(C:\out\b.html)", "<p>"}},
     {3, 0, R"(C:\out\)", ""},
     {"list 7 16 0",
      R"(QlXSLT: XSLTRunTrScenario -dontuseqlconsole -file "C:\out\a.dita" -xslfilepath "C:\web.xsl" -outputfilepath "C:\out\a.html")"},
     Encoded({R"(C:\out\bad.dita)"}) + Lines{"Fehler:Datei wird codiert...*"} +
         Lines{R"(Logarithmus:Datei wird codiert...C:\out\a.dita)"} +
         Decoded({R"(C:\out\\a.html)", R"(C:\out\\b.html)"}) + Lines{"Fehler:Datei wird decodiert...*"},
     {"a.html", "b.html"}},

    {"GraphicsOnAnotherDriveStayWhereTheyAre",
     {R"(C:\src\a.dita)", {Document(R"(C:\src\a.dita)"), Graphic(R"(D:\far.png)")}},
     R"(-useXSLT C:\web.xsl)",
     {},
     {3, 0, R"(C:\out\)", ""},
     {"list 7 16 0",
      R"(QlXSLT: XSLTRunTrScenario -dontuseqlconsole -file "C:\out\a.dita" -xslfilepath "C:\web.xsl" -outputfilepath "C:\out\a.html")"},
     Lines{"Achtung:" + test::rootsText} + Encoded({R"(C:\out\a.dita)"}) + Decoded({}),
     {}},

    {"DocumentsOnTwoDrivesEndTheRun",
     {R"(C:\src\a.dita)", {Document(R"(C:\src\a.dita)"), Document(R"(D:\b.dita)")}},
     "-useDITAOT",
     {},
     {3, 0, "", ""},
     {"list 7 16 0"},
     {"Fehler:" + test::rootsText},
     {"old\\", "old\\page.html"}},
};

/// Lines as expected; one that ends in "*" stands for any line that begins so and goes on.
void ExpectLines(const Lines& actual, const Lines& expected) {
    ASSERT_EQ(actual.size(), expected.size()) << testing::PrintToString(actual);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const std::string& line = expected[i];
        if (line.ends_with("...*")) {
            EXPECT_TRUE(actual[i].starts_with(line.substr(0, line.size() - 1))) << actual[i];
            EXPECT_GE(actual[i].size(), line.size()) << "the reason is missing";
        } else {
            EXPECT_EQ(actual[i], line) << "line " << i + 1;
        }
    }
}

TEST_P(PublishRequests, RunAsTheRowSays) {
    const PublishRow& row = GetParam();
    host.documents[7] = row.document;
    host.openResult = 4711;
    host.onClient = [&](const std::string&, const std::string&) {
        for (const auto& [path, content] : row.clientWrites) {
            drives.Write(path, content);
        }
    };
    host.calls.clear();
    EXPECT_EQ(host.Request(R"(Publish -docId 7 -outputFolder C:\out\ -logFile C:\log.txt )" + row.options),
              row.reply);
    EXPECT_EQ(host.calls, row.calls);
    ExpectLines(test::LinesOf(drives.Read(R"(C:\log.txt)")), row.log);
    EXPECT_EQ(drives.Tree(R"(C:\out\)"), row.tree);
    EXPECT_EQ(drives.Read(R"(C:\src\a.dita)"), topicText) << "sources are read only";
}

INSTANTIATE_TEST_SUITE_P(All, PublishRequests, testing::ValuesIn(publishRows),
                         [](const auto& row) { return row.param.name; });

class PublishDriver : public PublishRequests {};

TEST_F(PublishDriver, RefusedOpenLeavesNoTraceOfTheDitaRun) {
    host.documents[7] = flatDocument;
    host.openResult = 0;
    host.calls.clear();
    const auto reply =
        host.Request(R"(Publish -docId 7 -outputFolder C:\out\ -logFile C:\log.txt -useDITAOT)");
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->first, R"(C:\out\build-guide.ditamap\\xhtml\)");
    EXPECT_EQ(host.calls, (Strings{"list 7 16 0", R"(open C:\out\guide.ditamap)"}));
    EXPECT_EQ(test::LinesOf(drives.Read(R"(C:\log.txt)")),
              Encoded({R"(C:\out\guide.ditamap)", R"(C:\out\a.dita)"}) + Decoded({}));
}

TEST_F(PublishDriver, FolderOfADitaRunIsMadeWhereTheRequestNamesNone) {
    host.documents[7] = flatDocument;
    host.openResult = 4711;
    Strings seen;
    host.onClient = [&](const std::string&, const std::string&) { seen = drives.Tree(R"(C:\out\)"); };
    const std::string request = R"(Publish -docId 7 -outputFolder C:\out\ -logFile C:\log.txt -useDITAOT)";
    const Strings package = {"a.dita", "guide.ditamap", "img\\", "img\\p.png"};
    host.Request(request + R"( -outFilePath C:\out\own\)");
    EXPECT_EQ(seen, package);
    host.Request(request);
    EXPECT_EQ(seen, (Strings{"a.dita", "build-guide.ditamap\\", "guide.ditamap", "img\\", "img\\p.png"}));
}

TEST_F(PublishDriver, OpenScriptDiffersFromTheDefaultInEightRows) {
    host.documents[7] = flatDocument;
    host.Request(R"(Publish -docId 7 -outputFolder C:\out\ -logFile C:\log.txt -useDITAOT)");
    ASSERT_EQ(host.openScript.size(), 50u) << "54 rows, four of them texts";
    EXPECT_EQ(host.openScript[5], 0);
    for (const int number : {20, 22, 23, 24, 25, 28, 40}) {
        EXPECT_EQ(host.openScript[number], 1) << number;
    }
    EXPECT_EQ(host.openScript[21], 5);
    EXPECT_EQ(host.openScript[26], 1);
    EXPECT_EQ(host.openScript[53], -1);
}

TEST_F(PublishDriver, RecordIsCompletedForThePasses) {
    host.documents[7] = flatDocument;
    PublishParams params;
    params.scopedAttributes = {"1", "2", "3", "4", "5", "6"};
    PublishReply reply;
    PublishDocument(7, R"(C:\out\)", nullptr, nullptr, "", false, true, "", params, R"(C:\log.txt)", reply);
    EXPECT_EQ(params.scopedAttributes, (std::list<std::string>{"1", "2", "3", "4"}));
    EXPECT_EQ(params.skipElements, std::list<std::string>{"mathml"});
    EXPECT_EQ(params.packageBase, R"(C:\out\guide.ditamap)");
    EXPECT_EQ(reply.resultFolder, R"(C:\out\)");
    EXPECT_EQ(reply.buildLog, "");
}

TEST_F(PublishDriver, CopiesWithoutAnythingToEncodeStayByteForByte) {
    const std::string text =
        "<?xml version='1.0'  encoding=\"UTF-8\"?>\r\n<!DOCTYPE topic [<!ENTITY e 'x'>]>\r\n"
        "<topic  id='a'><p></p><p/>\r\n<b>&e;&#65;</b></topic>\r\n<!-- end -->";
    drives.Write(R"(C:\src\a.dita)", text);
    host.documents[7] = {R"(C:\src\a.dita)", {Document(R"(C:\src\a.dita)")}};
    std::string seen;
    host.onClient = [&](const std::string&, const std::string&) { seen = drives.Read(R"(C:\out\a.dita)"); };
    host.Request(R"(Publish -docId 7 -outputFolder C:\out\ -logFile C:\log.txt -useXSLT C:\web.xsl)");
    EXPECT_EQ(seen, text);
}

}  // namespace
}  // namespace ventrix
