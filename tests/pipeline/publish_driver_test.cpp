// Publish requests with a scripted host: the calls to the host, the reply, the log and the files on disk.
#include "pipeline/publish_driver.h"

#include "bridge/host/properties.h"
#include "bridge/open_script.h"
#include "support/module_test.h"

namespace ventrix::test {
namespace {

using FilesWritten = std::vector<std::pair<std::string, std::string>>;

constexpr char kPageText[] = "<html><body><p>x</p></body></html>";
const std::string kPublish = R"(Publish -docId 7 -outputFolder C:\out\ -logFile C:\log.txt )";
constexpr char kTopicText[] = "<topic><p/></topic>";

/// One request for document 7, into C:\out\, with the log C:\log.txt.
struct PublishRow {
    std::string name;
    HostDocument document;
    std::string options;
    FilesWritten clientWrites;  ///< By any client that is called.
    Lines calls;
    Lines log;
    Lines tree;  ///< Of C:\out\ at the end.
};

class PublishDriver : public ModuleTest {
  protected:
    void SetUp() override {
        drives.Write(R"(C:\out\old\page.html)", "from an earlier run");
        for (const char* path : {R"(C:\src\guide.ditamap)", R"(C:\src\a.dita)", R"(C:\src\sub\b.dita)",
                                 R"(C:\src\maps\deep.ditamap)"}) {
            drives.Write(path, kTopicText);
        }
        drives.Write(R"(C:\src\bad.dita)", "<topic>");
        drives.Write(R"(C:\src\img\p.png)", "png");
    }
};

class PublishRequests : public PublishDriver, public testing::WithParamInterface<PublishRow> {};

Lines Coded(Lines lines, const std::string& message, const Lines& files) {
    for (const std::string& file : files) {
        lines.push_back("Logarithmus:" + message + "..." + file);
    }
    return lines;
}

Lines Encoded(const Lines& files) {
    return Coded(Heading(kEncodeHeading), "Datei wird codiert", files);
}

Lines Decoded(const Lines& files) {
    return Coded(Heading(kDecodeHeading), "Datei wird decodiert", files);
}

Lines DitaRun(const std::string& input, const std::string& ditaval) {
    return {"", "Logarithmus:DITA_OT wird ausgeführt...", kRuleLine, "Eingabedatei:" + input,
            "DITAVAL-Datei:" + ditaval};
}

Lines DitaCalls(const std::string& document, const std::string& options, const std::string& reply) {
    return {"ListDocumentFiles 7 16 0",
            "ReadStringProp 0 7 20",
            "ReadStringProp 0 7 20",
            "OpenDocument " + document,
            "InvokeClient Dita OT: Save -docId 4711 -transtype xhtml " + options,
            "CloseDocument 4711 1",
            "SendCallReply " + reply};
}

Lines StylesheetCalls(const std::string& document, const std::string& stylesheet, const std::string& output,
                      const std::string& reply) {
    return {"ListDocumentFiles 7 16 0", "ReadStringProp 0 7 20", "ReadStringProp 0 7 20",
            "InvokeClient QlXSLT: XSLTRunTrScenario -dontuseqlconsole -file \"" + document +
                "\" -xslfilepath \"" + stylesheet + "\" -outputfilepath \"" + output + "\"",
            "SendCallReply " + reply};
}

const HostDocument kFlatDocument = {
    R"(C:\src\guide.ditamap)",
    {Document(R"(C:\src\guide.ditamap)"), Document(R"(C:\src\a.dita)"), Graphic(R"(C:\src\img\p.png)")}};
const HostDocument kDeepDocument = {
    R"(C:\src\maps\deep.ditamap)", {Document(R"(C:\src\maps\deep.ditamap)"), Graphic(R"(C:\src\img\p.png)")}};

const PublishRow kPublishRows[] = {
    {"DitaRunOfAFlatDocument",
     kFlatDocument,
     R"(-useDITAOT -ditaval "C:\my web.ditaval" -useXSLT C:\ignored.xsl)",
     {{R"(C:\out\build-guide.ditamap\xhtml\index.html)", kPageText},
      {R"(C:\out\build-guide.ditamap\buildlog-xhtml.txt)", "ok"}},
     DitaCalls(R"(C:\out\guide.ditamap)",
               R"(-filter "C:\my web.ditaval" -outFilePath "C:\out\build-guide.ditamap\")",
               R"(0 "C:\out\build-guide.ditamap\\xhtml\" "C:\out\build-guide.ditamap\\buildlog-xhtml.txt")"),
     Encoded({R"(C:\out\guide.ditamap)", R"(C:\out\a.dita)"}) +
         DitaRun(R"(C:\out\guide.ditamap)", R"(C:\my web.ditaval)") +
         Decoded({R"(C:\out\\build-guide.ditamap\xhtml\index.html)"}),
     {"build-guide.ditamap\\", "build-guide.ditamap\\buildlog-xhtml.txt", "build-guide.ditamap\\xhtml\\",
      "build-guide.ditamap\\xhtml\\img\\", "build-guide.ditamap\\xhtml\\img\\p.png",
      "build-guide.ditamap\\xhtml\\index.html", "img\\", "img\\p.png"}},

    {"DitaRunMovesTheResultToTheDocumentsDepth",
     kDeepDocument,
     "-useDITAOT",
     {{R"(C:\out\build-deep.ditamap\xhtml\index.html)", kPageText},
      {R"(C:\out\build-deep.ditamap\xhtml\sub\b.html)", kPageText}},
     DitaCalls(
         R"(C:\out\maps\deep.ditamap)", R"(-outFilePath "C:\out\build-deep.ditamap\")",
         R"(0 "C:\out\build-deep.ditamap\\xhtml\maps\" "C:\out\build-deep.ditamap\\buildlog-xhtml.txt")"),
     Encoded({R"(C:\out\maps\deep.ditamap)"}) + DitaRun(R"(C:\out\maps\deep.ditamap)", "") +
         Decoded({R"(C:\out\\build-deep.ditamap\xhtml\index.html)",
                  R"(C:\out\\build-deep.ditamap\xhtml\sub\b.html)"}),
     {"build-deep.ditamap\\", "build-deep.ditamap\\xhtml\\", "build-deep.ditamap\\xhtml\\img\\",
      "build-deep.ditamap\\xhtml\\img\\p.png", "build-deep.ditamap\\xhtml\\maps\\",
      "build-deep.ditamap\\xhtml\\maps\\index.html", "build-deep.ditamap\\xhtml\\maps\\sub\\",
      "build-deep.ditamap\\xhtml\\maps\\sub\\b.html", "build-deep.ditamap\\xhtml\\sub\\", "img\\",
      "img\\p.png"}},

    {"AnExistingFolderAtTheDocumentsDepthStaysUnchanged",
     kDeepDocument,
     "-useDITAOT",
     {{R"(C:\out\build-deep.ditamap\xhtml\index.html)", kPageText},
      {R"(C:\out\build-deep.ditamap\xhtml\maps\own.html)", kPageText}},
     DitaCalls(
         R"(C:\out\maps\deep.ditamap)", R"(-outFilePath "C:\out\build-deep.ditamap\")",
         R"(0 "C:\out\build-deep.ditamap\\xhtml\maps\" "C:\out\build-deep.ditamap\\buildlog-xhtml.txt")"),
     Encoded({R"(C:\out\maps\deep.ditamap)"}) + DitaRun(R"(C:\out\maps\deep.ditamap)", "") +
         Decoded({R"(C:\out\\build-deep.ditamap\xhtml\index.html)",
                  R"(C:\out\\build-deep.ditamap\xhtml\maps\own.html)"}),
     {"build-deep.ditamap\\", "build-deep.ditamap\\xhtml\\", "build-deep.ditamap\\xhtml\\img\\",
      "build-deep.ditamap\\xhtml\\img\\p.png", "build-deep.ditamap\\xhtml\\index.html",
      "build-deep.ditamap\\xhtml\\maps\\", "build-deep.ditamap\\xhtml\\maps\\own.html", "img\\",
      "img\\p.png"}},

    {"ASilentClientLeavesAFolderForADeepDocument",
     {R"(C:\src\maps\deep.ditamap)", {Document(R"(C:\src\maps\deep.ditamap)"), Document(R"(C:\src\a.dita)")}},
     "-useDITAOT",
     {},
     DitaCalls(
         R"(C:\out\maps\deep.ditamap)", R"(-outFilePath "C:\out\build-deep.ditamap\")",
         R"(0 "C:\out\build-deep.ditamap\\xhtml\maps\" "C:\out\build-deep.ditamap\\buildlog-xhtml.txt")"),
     Encoded({R"(C:\out\maps\deep.ditamap)", R"(C:\out\a.dita)"}) +
         DitaRun(R"(C:\out\maps\deep.ditamap)", "") + Decoded({}),
     {"build-deep.ditamap\\", "build-deep.ditamap\\xhtml\\", "build-deep.ditamap\\xhtml\\maps\\"}},

    {"ASilentClientLeavesNoFolderForAFlatDocument",
     {R"(C:\src\a.dita)", {Document(R"(C:\src\a.dita)")}},
     "-useDITAOT",
     {},
     DitaCalls(R"(C:\out\a.dita)", R"(-outFilePath "C:\out\build-a.dita\")",
               R"(0 "C:\out\build-a.dita\\xhtml\" "C:\out\build-a.dita\\buildlog-xhtml.txt")"),
     Encoded({R"(C:\out\a.dita)"}) + DitaRun(R"(C:\out\a.dita)", "") + Decoded({}),
     {}},

    {"TheDitaFolderOfTheRequestIsNeitherCreatedNorDecoded",
     {R"(C:\src\a.dita)", {Document(R"(C:\src\a.dita)")}},
     R"(-useDITAOT -outFilePath C:\else\x)",
     {{R"(C:\else\x\xhtml\a.html)", kPageText}},
     DitaCalls(R"(C:\out\a.dita)", R"(-outFilePath "C:\else\x")",
               R"(0 "C:\else\x\\xhtml\" "C:\else\x\\buildlog-xhtml.txt")"),
     Encoded({R"(C:\out\a.dita)"}) + DitaRun(R"(C:\out\a.dita)", "") + Decoded({}),
     {}},

    {"StylesheetWithItsOwnOutputFile",
     kFlatDocument,
     R"(-useXSLT "C:\my styles\web.xsl" -outFilePath C:\out\pages\guide.htm)",
     {{R"(C:\out\pages\guide.htm)", kPageText}, {R"(C:\out\pages\CAPITALS.HTML)", kPageText}},
     StylesheetCalls(R"(C:\out\guide.ditamap)", R"(C:\my styles\web.xsl)", R"(C:\out\pages\guide.htm)",
                     R"(0 "C:\out\" "")"),
     Encoded({R"(C:\out\guide.ditamap)", R"(C:\out\a.dita)"}) + Decoded({R"(C:\out\\pages\guide.htm)"}),
     {"img\\", "img\\p.png", "pages\\", "pages\\CAPITALS.HTML", "pages\\guide.htm"}},

    {"StylesheetOnADeepDocumentMovesTheResultOneLevelFurther",
     kDeepDocument,
     R"(-useXSLT C:\web.xsl)",
     {{R"(C:\out\maps\deep.html)", kPageText}},
     StylesheetCalls(R"(C:\out\maps\deep.ditamap)", R"(C:\web.xsl)", R"(C:\out\maps\deep.html)",
                     R"(0 "C:\out\maps\maps\" "")"),
     Encoded({R"(C:\out\maps\deep.ditamap)"}) + Decoded({R"(C:\out\\maps\deep.html)"}),
     {"img\\", "img\\p.png", "maps\\", "maps\\img\\", "maps\\img\\p.png", "maps\\maps\\",
      "maps\\maps\\deep.html"}},

    {"AFileThatDoesNotLoadIsLoggedAndTheRunContinues",
     {R"(C:\src\a.dita)",
      {Document(R"(C:\src\bad.dita)"), Document(R"(C:\src\a.dita)"), Document("http://x/y.dita")}},
     R"(-useXSLT C:\web.xsl)",
     {{R"(C:\out\a.html)", kPageText}, {R"(C:\out\b.html)", "<p>"}},
     StylesheetCalls(R"(C:\out\a.dita)", R"(C:\web.xsl)", R"(C:\out\a.html)", R"(0 "C:\out\" "")"),
     Encoded({R"(C:\out\bad.dita)"}) + Lines{"Fehler:Datei wird codiert...*"} +
         Lines{R"(Logarithmus:Datei wird codiert...C:\out\a.dita)"} +
         Decoded({R"(C:\out\\a.html)", R"(C:\out\\b.html)"}) + Lines{"Fehler:Datei wird decodiert...*"},
     {"a.html", "b.html"}},

    {"DocumentsOnTwoDrivesEndTheRun",
     {R"(C:\src\a.dita)", {Document(R"(C:\src\a.dita)"), Document(R"(D:\b.dita)")}},
     "-useDITAOT",
     {},
     {"ListDocumentFiles 7 16 0", R"(SendCallReply 0 "" "")"},
     {"Fehler:" + kRootsText},
     {"old\\", "old\\page.html"}},
};

/// The log with "*" for the reasons of failures. A failure without a reason stays unchanged.
Lines WithoutReasons(Lines log) {
    for (std::string& line : log) {
        if (line.starts_with("Fehler:Datei wird ") && !line.ends_with("...")) {
            line = line.substr(0, line.find("...")) + "...*";
        }
    }
    return log;
}

TEST_P(PublishRequests, GiveTheExpectedCallsLogAndFiles) {
    const PublishRow& row = GetParam();
    host.documents[7] = row.document;
    host.onClient = [&](const std::string&) {
        for (const auto& [path, content] : row.clientWrites) {
            drives.Write(path, content);
        }
    };
    host.log.clear();
    host.Request(kPublish + row.options);
    EXPECT_EQ(host.log, row.calls);
    EXPECT_EQ(WithoutReasons(LogLines()), row.log);
    EXPECT_EQ(drives.Tree(R"(C:\out\)"), row.tree);
    EXPECT_EQ(drives.Read(R"(C:\src\a.dita)"), kTopicText) << "sources are read only";
}

INSTANTIATE_TEST_SUITE_P(All, PublishRequests, testing::ValuesIn(kPublishRows),
                         [](const auto& row) { return row.param.name; });

TEST_F(PublishDriver, LogsNoDitaRunIfTheHostDoesNotOpenTheCopy) {
    host.documents[7] = kFlatDocument;
    host.openedId = 0;
    EXPECT_EQ(host.Request(kPublish + "-useDITAOT"),
              R"(0 "C:\out\build-guide.ditamap\\xhtml\" "C:\out\build-guide.ditamap\\buildlog-xhtml.txt")");
    EXPECT_EQ(host.log[host.log.size() - 2], R"(OpenDocument C:\out\guide.ditamap)");
    EXPECT_EQ(LogLines(), Encoded({R"(C:\out\guide.ditamap)", R"(C:\out\a.dita)"}) + Decoded({}));
}

TEST_F(PublishDriver, CreatesTheDitaFolderIfTheRequestNamesNone) {
    host.documents[7] = kFlatDocument;
    Lines seen;
    host.onClient = [&](const std::string&) { seen = drives.Tree(R"(C:\out\)"); };
    host.Request(kPublish + R"(-useDITAOT -outFilePath C:\out\own\)");
    EXPECT_EQ(seen, (Lines{"a.dita", "guide.ditamap", "img\\", "img\\p.png"}));
    host.Request(kPublish + "-useDITAOT");
    EXPECT_EQ(seen, (Lines{"a.dita", "build-guide.ditamap\\", "guide.ditamap", "img\\", "img\\p.png"}));
}

TEST_F(PublishDriver, ChangesEightRowsOfTheDefaultOpenScript) {
    host.documents[7] = kFlatDocument;
    host.Request(kPublish + "-useDITAOT");
    Q_PropList script = Q_ApiDefaultOpenScript();
    const Lines usual = Print(script);
    Q_ApiFreePropList(&script);
    ASSERT_EQ(host.openScript.size(), usual.size());
    Lines changed;
    std::copy_if(host.openScript.begin(), host.openScript.end(), std::back_inserter(changed),
                 [&](const std::string& row) { return std::ranges::count(usual, row) == 0; });
    EXPECT_EQ(changed, Lines({"5=0", "20=1", "22=1", "23=1", "28=1", "24=1", "25=1", "40=1"}));
}

TEST_F(PublishDriver, CompletesTheOptionsForThePasses) {
    host.documents[7] = kFlatDocument;
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

TEST_F(PublishDriver, KeepsCopiesWithoutAnythingToEncodeByteForByte) {
    const std::string text =
        "<?xml version='1.0'  encoding=\"UTF-8\"?>\r\n<!DOCTYPE topic [<!ENTITY e 'x'>]>\r\n"
        "<topic  id='a'><p></p><p/>\r\n<b>&e;&#65;</b></topic>\r\n<!-- end -->";
    drives.Write(R"(C:\src\a.dita)", text);
    host.documents[7] = {R"(C:\src\a.dita)", {Document(R"(C:\src\a.dita)")}};
    std::string seen;
    host.onClient = [&](const std::string&) { seen = drives.Read(R"(C:\out\a.dita)"); };
    host.Request(kPublish + R"(-useXSLT C:\web.xsl)");
    EXPECT_EQ(seen, text);
}

}  // namespace
}  // namespace ventrix::test
