#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "desk/clients/saxon.h"
#include "desk/command_line.h"
#include "desk/toolkit/page_layout.h"
#include "platform/drives.h"
#include "platform/native_roots.h"
#include "support/links.h"
#include "support/scripts.h"
#include "support/test_drives.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using test::Finished;
using test::RunVentrix;

constexpr char kTopic[] =
    "<topic id=\"t\"><title>Title</title><body><p audience=\"expert\">Press <b>it</b>.</p></body></topic>";

/// Copies the document's text into the body of a page and into its description.
constexpr char kStylesheet[] =
    "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">"
    "<xsl:output method=\"xml\"/><xsl:template match=\"/\"><html><head><meta name=\"d\" "
    "content=\"{.}\"/></head>"
    "<body><p><xsl:value-of select=\".\"/></p></body></html></xsl:template></xsl:stylesheet>";

/// Runs commands in a folder with documents of several kinds.
class CommandLine : public testing::Test {
  protected:
    CommandLine() {
        folder.Write("src/a.dita", kTopic);
        folder.Write("src/plain.xml", "<root><x kind=\"k\">text</x></root>");
        folder.Write("src/text.xml", "no xml");
        folder.Write("src/empty.xml", "");
        if (test::kHasAnyNames) {
            folder.Write("src/control\x01.xml", "<a/>");
            folder.Write("src/back\\slash.xml", "<a/>");
            folder.Write("src/bytes\xff.xml", "<a/>");
        }
        folder.Write("page.xsl", kStylesheet);
        folder.Write("broken.xsl", "<broken");
        folder.Write("text.png", "text");
        folder.Write("full/mine.txt", "keep");
    }

    Finished Run(std::vector<std::string> arguments, const test::RunSettings& settings = {}) {
        return RunVentrix(folder, std::move(arguments), settings);
    }

    test::TestFolder folder;
};

struct Row {
    std::vector<std::string> arguments;
    int status;
    std::string out, error;  ///< Substrings to find; empty if the stream must be empty.
};

void ExpectRow(const Row& row, const Finished& finished) {
    std::string line;
    for (const std::string& argument : row.arguments) {
        line += argument.substr(0, 60) + ' ';
    }
    SCOPED_TRACE(line);
    EXPECT_EQ(finished.status, row.status) << finished.out << finished.error;
    EXPECT_NE(finished.out.find(row.out), std::string::npos) << finished.out;
    EXPECT_NE(finished.error.find(row.error), std::string::npos) << finished.error;
    EXPECT_EQ(finished.out.empty(), row.out.empty()) << finished.out;
    EXPECT_EQ(finished.error.empty(), row.error.empty()) << finished.error;
}

TEST_F(CommandLine, InvalidUsageIsReportedAndLeavesNoFiles) {
    const std::string tooLong(1024, 'x');
    const std::string source = folder.Native("src/a.dita");
    const std::vector<std::string> publish{"publish", "src/a.dita", "-o", "out"};
    const auto with = [&](std::vector<std::string> further) {
        further.insert(further.begin(), publish.begin(), publish.end());
        return further;
    };
    std::vector<Row> rows = {
        {{}, 2, "", "error: missing command (expected publish, validate, request, init or help)"},
        {{"publsh"}, 2, "", "error: unknown command 'publsh'; did you mean 'publish'? See --help"},
        {{"frob"},
         2,
         "",
         "error: unknown command 'frob' (expected publish, validate, request, init or help); see --help"},
        {{"help", "publsh"}, 2, "", "error: unknown command 'publsh'; did you mean 'publish'? See --help"},
        {with({"--dry-run", "--json"}), 2, "\"exitStatus\":2", "excludes"},
        {{"validate", "src/a.dita", "--format", "xml"}, 2, "", "--format: xml not in"},
        {{"validate", "src/a.dita", "--ditaval", "none"}, 2, "", "--ditaval: none is not a readable file"},
        {with({"--config", "none.toml"}), 2, "", "--config: none.toml is not a readable file"},
        {{"publish", "--outptu", "out"}, 2, "", "unknown option '--outptu'; did you mean '--output'?"},
        {{"publish"}, 2, "", "DOCUMENT is required"},
        {{"publish", "src/a.dita"}, 2, "", "--output is required"},
        {{"publish", "", "-o", "out"}, 2, "", "DOCUMENT: the value is empty"},
        {{"publish", "src/a.dita", "-o", ""}, 2, "", "--output: the value is empty"},
        {{"request", "Foo"}, 2, "", "--document is required"},
        {{"publish", "--json"}, 2, "\"exitStatus\":2", "DOCUMENT is required"},
        {with({"--colour", "always"}), 2, "", "--colour"},
        {with({"--quiet", "--verbose"}), 2, "", "excludes"},
        {with({"--dita-ot", "--xslt", "page.xsl"}), 2, "", "excludes"},
        {with({"--xslt", "none.xsl"}), 2, "", "--xslt: none.xsl"},
        {with({"--ditaval", "src"}), 2, "", "--ditaval: src"},
        {with({"--transtype", "t"}), 2, "", "--transtype has no effect without an installed toolkit"},
        {with({"--css", "none.css"}), 2, "", "--css: none.css is not a readable file"},
        {with({"--logo", "page.xsl"}), 2, "", "--logo: page.xsl is not an image that browsers show"},
        {with({"--logo", "text.png"}), 2, "", "--logo: text.png does not contain an image"},
        {{"publish", "staff"}, 3, "", "staff does not exist, and there is no ventrix.toml in this folder"},
        {with({"--title", "T", "--xslt", "page.xsl"}), 2, "", "--title has no effect without the built-in"},
        {with({"--catalog", "none"}), 2, "", "--catalog: none"},
        {with({"--post-script", "page.xsl"}), 2, "", "page.xsl is not executable"},
        {with({"--attributes", ""}), 2, "", "--attributes: the value is empty"},
        {with({"--attributes="}), 2, "", "--attributes: the value is empty, and no project file sets one"},
        {with({"--out-file", "a'b\"c"}), 2, "", "--out-file: a value cannot contain both"},
        {with({"--elements", tooLong}), 2, "",
         "--elements: the value is too long (1024 bytes; the limit is 1023)"},
        {with({"--log", "full"}), 2, "", "is a folder"},
        {with({"--log", "out/log.txt"}), 2, "", "is in the output folder"},
        {with({"--log", "src/a.dita"}), 2, "", "--log: " + source + " is an input of this run"},
        {with({"--out-file", "src/../src/a.dita"}), 2, "", "--out-file: " + source + " is an input"},
        {{"validate", "src/a.dita", "--log", "src/a.dita"}, 2, "", "--log: " + source + " is an input"},
        {with({"--no-transform"}), 2, "", "--no-transform leaves nothing to do; add --pre-script"},
        {with({"--no-transform", "--dita-ot"}), 2, "", "excludes"},
        {{"publish", "src/plain.xml", "-o", "out"}, 2, "", "is not a DITA document"},
    };
    if (platform::SystemHasDrives()) {
        rows.push_back({with({"--drive", "C=src"}), 2, "", "--drive: this system has drives of its own"});
    } else {
        const Row drives[] = {
            {with({"--drive", "C"}), 2, "", "--drive: 'C' is not of the form X=FOLDER"},
            {with({"--drive", "C=none"}), 2, "", "--drive: 'C=none' names a folder that does not exist"},
            {with({"--drive", "long=src"}), 2, "", "--drive: 'long=src' must begin with a drive letter"},
        };
        rows.insert(rows.end(), std::begin(drives), std::end(drives));
    }
    if (test::kHasAnyNames) {
        rows.push_back({{"publish", "src/a.dita", "-o", "o\nx"},
                        2,
                        "",
                        "o\\x0ax: the name contains a control character"});
    }
    for (const Row& row : rows) {
        ExpectRow(row, Run(row.arguments));
    }
    EXPECT_FALSE(folder.Exists("out")) << "nothing was written";
    EXPECT_EQ(folder.Read("src/a.dita"), kTopic);
}

TEST_F(CommandLine, UnreadableDocumentsAreReported) {
    test::MakeLink("nowhere.xml", folder.Native("src/dangling.xml"));
    std::vector<Row> rows = {
        {{"validate", "src/none.xml"}, 3, "", "does not exist"},
        {{"validate", "src/dangling.xml"}, 3, "", "does not exist"},
        {{"validate", "src"}, 3, "", "is a folder"},
        {{"validate", "src/text.xml"}, 3, "", "text.xml cannot be read: line 1: "},
        {{"validate", "src/empty.xml"}, 3, "", "empty.xml cannot be read: "},
        {{"publish", "src/text.xml", "-o", "full"}, 3, "", "cannot be read"},
        {{"request", "--document", "src/none.xml", "Foo"}, 3, "", "does not exist"},
    };
    if (test::kHasAnyNames) {
        const Row names[] = {
            {{"validate", "/dev/null"}, 3, "", "/dev/null cannot be read: "},
            {{"validate", "src/control\x01.xml"}, 3, "", "\\x01.xml: the name contains a control character"},
            {{"validate", "src/back\\slash.xml"}, 3, "", "the name contains a backslash"},
            {{"validate", "--json", "src/bytes\xff.xml"}, 3, "\"exitStatus\":3", "is not valid UTF-8"},
        };
        rows.insert(rows.end(), std::begin(names), std::end(names));
    }
    for (const Row& row : rows) {
        ExpectRow(row, Run(row.arguments));
    }
}

TEST_F(CommandLine, AVeryLongPathIsReadOrRefusedWithTheReason) {
    std::string name = "src";
    while (folder.Native(name).size() < 767 - 60) {
        name += '/' + std::string(60, 'f');
    }
    name += "/a.dita";
    if (platform::NativePathLimit() == 0) {
        folder.Write(name, kTopic);
        EXPECT_EQ(Run({"validate", name}).status, 0);
        return;
    }
    const std::string reason = "the path is longer than 259 characters; move the files";
    ExpectRow({{"validate", name}, 3, "", reason}, Run({"validate", name}));
    const Finished published = Run({"publish", "src/a.dita", "-o", name});
    EXPECT_NE(published.status, 0);
    EXPECT_NE(published.error, "");
}

TEST_F(CommandLine, HelpAndVersionGoToStandardOutput) {
    const Row rows[] = {
        {{"--help"}, 0, "128+n  signal n ended the run", ""},
        {{"publish", "--help"}, 0, "--scoped-attributes", ""},
        {{"help"}, 0, "128+n  signal n ended the run", ""},
        {{"help", "validate"}, 0, "Usage: ventrix validate [OPTIONS] [DOCUMENT]", ""},
        {{"--version"}, 0, "ventrix 1.0.0.1\n", ""},
        {{"-V"}, 0, "ventrix 1.0.0.1\n", ""},
    };
    for (const Row& row : rows) {
        ExpectRow(row, Run(row.arguments));
    }
}

TEST_F(CommandLine, HelpListsOptionsInGroups) {
    const std::string help = Run({"help", "publish"}).out;
    std::size_t at = 0;
    for (const char* text : {"What to carry:", "--attributes", "How to transform:", "--xslt", "Where to:",
                             "--output", "What to read:", "--config", "How to report:", "--json", "--help"}) {
        const std::size_t found = help.find(text, at);
        ASSERT_NE(found, std::string::npos) << text << "\n" << help;
        at = found;
    }
}

TEST_F(CommandLine, RequestPrintsTheReply) {
    folder.Write("gone.xml", "<a>\n<b href=\"none.png\"/></a>");
    folder.Write("open.ditamap",
                 "<map><title>M</title><topicref href=\"src/a.dita\"/><topicref "
                 "href=\"open.dita\"/></map>");
    folder.Write("open.dita", "<topic id=\"b\"><title>B</title><body><p>open</body></topic>");
    const std::string style = platform::ToSystem(folder.Native("page.xsl")).value();
    const std::string missing = folder.Native("gone.xml") + ":2:10: refers to " + folder.Native("none.png") +
                                ", which is missing or unreadable";
    const std::string log = " -logFile \"" + folder.System("log.txt") + '"';
    const std::string out = platform::ToSystem(folder.Native("out")).value() + '\\';
    const auto request = [](const std::string& document, const std::string& text) {
        return std::vector<std::string>{"request", "--document", document, text};
    };
    const Row rows[] = {
        {request("src/plain.xml", ""), 4, "status: -43\nfirst:  \nsecond: \n", "the module refused"},
        {request("src/plain.xml", "Foo"), 4, "status: -43\n", "the module refused"},
        {request("src/plain.xml", "Validate -docId {docId}"), 4, "status: 16\n", "could not write its log"},
        {request("src/plain.xml", "Publish -docId {docId} -useDITAOT -outputFolder x\\"), 4,
         "status: 0\nfirst:  \nsecond: \n", "packaging failed"},
        {request("src/plain.xml", "Publish -docId {docId} -useXSLT none -outputFolder " + out + log), 6,
         "first:  " + out, "the transformation failed: "},
        {request("src/plain.xml", "Publish -docId {docId} -usePreScript none -outputFolder " + out + log), 0,
         "first:  " + out, "CreateProcess failed (2)"},
        {request("gone.xml", "Publish -docId {docId} -useXSLT " + style + " -outputFolder " + out + log), 1,
         "first:  " + out, missing},
        {request("open.ditamap", "Publish -docId {docId} -useDITAOT -outputFolder " + out + log), 1,
         "first:  " + out, "open.dita:1:51: could not be read: "},
        {request("src/plain.xml", "VALIDATE -DOCID {docId}" + log), 0, "status: 0\n", ""},
        {request("gone.xml", "Validate -docId {docId}" + log), 1, "status: 1\n", ""},
    };
    for (const Row& row : rows) {
        ExpectRow(row, Run(row.arguments));
    }
}

TEST_F(CommandLine, ValidatePrintsFileListsAndMask) {
    folder.Write(
        "refs.dita",
        "<topic id=\"t\"><title>T</title><body><p><image href=\"none.png\"/><image href=\"a%01b.png\"/>"
        "<xref href=\"src/a.dita\"/><xref href=\"http://example.com/\"/></p></body></topic>");
    const std::string document = folder.Native("refs.dita");
    const Finished finished = Run({"validate", "refs.dita", "--unsaved", "src/a.dita", "--unsaved", "stray"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.out, "valid (1)\n  " + document + "\nmissing or unreadable (1)\n  " +
                                folder.Native("none.png") + "\nunsaved (1)\n  " +
                                folder.Native("src/a.dita") +
                                "\nfiles are missing or unreadable; files have unsaved changes (mask 3)\n");
    EXPECT_NE(finished.error.find("a%01b.png: the name contains a control character"), std::string::npos);
    EXPECT_NE(finished.error.find(folder.Native("stray") + ": --unsaved: the document does not"),
              std::string::npos);

    const Finished clean = Run({"validate", "src/a.dita", "--log", "kept.log"});
    EXPECT_EQ(clean.status, 0) << clean.error;
    EXPECT_NE(folder.Read("kept.log").find("a.dita\r\n"), std::string::npos);
}

TEST_F(CommandLine, FilesOnSeveralDrivesCannotBePackaged) {
    folder.Write("c/map.ditamap", "<map><title>M</title><topicref href=\"D:/t.dita\"/></map>");
    folder.Write("c/graphic.dita",
                 "<topic id=\"t\"><title>T</title><body><p><image href=\"D:/i.png\"/></p></body></topic>");
    folder.Write("d/t.dita", kTopic);
    folder.Write("d/i.png", "png");
    ASSERT_EQ(Run({"publish", "src/a.dita", "-o", "out"}).status, 0);
    const std::string earlier = "out/build-a.dita/xhtml/a.html";
    const auto on = [](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--drive", "C=c", "--drive", "d:=d"});
        return arguments;
    };
    const Row rows[] = {
        {on({"validate", "c/map.ditamap"}), 1, "are on several drives and cannot be packaged (mask 8)",
         "map.ditamap: the files are on several drives"},
        {on({"publish", "c/map.ditamap", "-o", "out"}), 4, "", "are on several drives"},
        {on({"validate", "c/graphic.dita"}), 1, "would have 1 finding\n", "would not be packaged"},
        {on({"publish", "c/graphic.dita", "-o", "other"}), 1, "result: ", "were not packaged"},
        {{"validate", "c/map.ditamap"},
         1,
         "would have 2 findings\n",
         "D:/t.dita: the drive is not mapped to a folder"},
    };
    for (const Row& row : rows) {
        ExpectRow(row, Run(row.arguments));
    }
    EXPECT_TRUE(folder.Exists(earlier)) << "the earlier result is kept";
}

TEST_F(CommandLine, OutputFolderKeepsWhatIsNotFromARun) {
    test::MakeLink("src", folder.Native("link"));
    folder.Write("importing.xsl", std::string(kStylesheet)
                                      .replace(std::string(kStylesheet).find('>') + 1, 0,
                                               "<xsl:import href=\"full/imported.xsl\"/>"));
    folder.Write("full/imported.xsl", kStylesheet);
    const auto publish = [](const std::string& output, bool force = false) {
        std::vector<std::string> arguments{"publish", "src/a.dita", "-o", output};
        if (force) {
            arguments.push_back("--force");
        }
        return arguments;
    };
    std::vector<Row> refused = {
        {publish("full"), 5, "", "is not empty and was not created by an earlier run; --force"},
        {publish("src", true), 5, "", "which the run reads"},
        {publish(".", true), 5, "", "which the run reads"},
        {publish("src/..", true), 5, "", "which the run reads"},
        {{"publish", "src/a.dita", "-o", "full", "--force", "--xslt", "importing.xsl"},
         5,
         "",
         "full/imported.xsl, which the run reads"},
        {publish("page.xsl", true), 5, "", "is not a folder"},
        {publish("page.xsl/out"), 5, "", "cannot be created: "},
        {publish(test::kDriveZ + "/proc/none"), 5, "", "cannot be created: "},
    };
    if (test::kHasLinks) {
        refused.push_back({publish("link", true), 5, "", "which the run reads"});
    }
    for (const Row& row : refused) {
        ExpectRow(row, Run(row.arguments));
    }
    EXPECT_TRUE(folder.Exists("full/mine.txt"));
    EXPECT_EQ(folder.Read("src/a.dita"), kTopic);

    fs::create_directory(folder.Native("empty"));
    EXPECT_EQ(Run(publish("empty")).status, 0);
    EXPECT_EQ(Run(publish("full", true)).status, 0);
    EXPECT_TRUE(folder.Exists("full/mine.txt"));
    folder.Write("full/build-a.dita/xhtml/a.html", "edited");
    EXPECT_EQ(Run(publish("full/")).status, 1) << "an earlier result is replaced, an edited page is named";
    EXPECT_EQ(folder.Read("full/build-a.dita/xhtml/a.html.edited"), "edited");
    EXPECT_TRUE(folder.Exists("full/mine.txt"));
}

TEST_F(CommandLine, PublishPrintsWhereTheResultIs) {
    const Finished finished =
        Run({"publish", "src/a.dita", "-o", "new/out", "--attributes", "audience", "--quiet"});
    const std::string build = folder.Native("new/out/build-a.dita/");
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.error, "");
    EXPECT_EQ(finished.out, "result:    " + build + "xhtml/\npages:     1\ntoolkit:   built-in\nbuild log: " +
                                build + "buildlog-xhtml.txt\nlog:       " + folder.Native("new/out.log") +
                                "\npreserved: 4 of 4 places\nlost:      0\n");
    const std::string page = folder.Read(build + "xhtml/a.html");
    EXPECT_NE(page.find("data-twtags=\"audienceQL_SEPexpert"), std::string::npos) << page;
}

TEST_F(CommandLine, ADtdOfSeveralFilesServesTheRunAndIsNoPartOfTheResult) {
    folder.Write("b/book.xml",
                 "<!DOCTYPE root [<!ENTITY % all SYSTEM 'dtd/all.ent'> %all;]><root><x kind=\"k\">The "
                 "&product;</x></root>");
    folder.Write("b/dtd/all.ent", "<!ENTITY % names SYSTEM 'sub/names.ent'> %names;");
    folder.Write("b/dtd/sub/names.ent", "<!ENTITY product 'P40'>");
    const Finished finished =
        Run({"publish", "b/book.xml", "-o", "out", "--xslt", "page.xsl", "--attributes", "kind"});
    EXPECT_EQ(finished.status, 0) << finished.error;
    const std::string page = folder.Read("out/book.html");
    EXPECT_NE(page.find("<p data-twtags=\"kindQL_SEPkQL_SEP\">The P40</p>"), std::string::npos) << page;
    EXPECT_FALSE(folder.Exists("out/dtd"));
}

TEST_F(CommandLine, AMisspelledAttributeOfAFilterIsAFinding) {
    folder.Write("f.ditaval", "<val><prop att=\"audeince\" val=\"expert\" action=\"exclude\"/></val>");
    const Finished finished = Run({"publish", "src/a.dita", "-o", "out", "--ditaval", "f.ditaval"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_NE(
        finished.error.find(
            "--ditaval: 'audeince' does not occur in any file of the document; did you mean 'audience'"),
        std::string::npos)
        << finished.error;
}

TEST_F(CommandLine, AProjectFileOfTheToolkitIsNamedAsSuch) {
    folder.Write("p.xml", "<project xmlns=\"https://www.dita-ot.org/project\"/>");
    folder.Write("p.json", "{ \"deliverables\": [] }");
    folder.Write("p.yaml", "# Site\ndeliverables:\n- name: Site\n");
    for (const std::string name : {"p.xml", "p.json", "p.yaml"}) {
        const Finished finished = Run({"publish", name, "-o", "out"});
        EXPECT_EQ(finished.status, 2);
        EXPECT_NE(finished.error.find(name + " is a project file of the DITA Open Toolkit"),
                  std::string::npos)
            << finished.error;
    }
    folder.Write("other.yaml", "a:\n  deliverables: 1\n");
    EXPECT_EQ(Run({"publish", "other.yaml", "-o", "out"}).status, 3);
}

TEST_F(CommandLine, PreservedElementsWithReferencesToThemOrOfTheirOwnKeepTheirText) {
    folder.Write("k.ditamap",
                 "<map><topicref href=\"k.dita\"/><keydef keys=\"lib\" href=\"l.dita\"/><keydef keys=\"x\">"
                 "<topicmeta><keywords><keyword>P40</keyword></keywords></topicmeta></keydef></map>");
    folder.Write("k.dita",
                 "<topic id=\"k\"><title>K</title><body><p>The <keyword keyref=\"x\"/> pump, <keyword "
                 "conref=\"l.dita#l/w\"/> and <keyword conkeyref=\"lib/v\"/></p><p>Of <keyword "
                 "conref=\"l.dita#l/f\" conrefend=\"l.dita#l/g\"/></p></body></topic>");
    folder.Write("l.dita",
                 "<topic id=\"l\"><title>L</title><body><p>A <keyword id=\"w\">valve</keyword> and <keyword "
                 "id=\"v\">hose</keyword> <keyword id=\"u\">unused</keyword></p><p>Of <keyword "
                 "id=\"f\">first</keyword>, "
                 "<keyword>middle</keyword> and <keyword id=\"g\">last</keyword></p></body></topic>");
    const Finished finished = Run({"publish", "k.ditamap", "-o", "out", "--elements", "keyword"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_NE(finished.error.find(".dita:1: <keyword> is not preserved but left to the transformation, "
                                  "because a reference needs it; places: 9"),
              std::string::npos)
        << finished.error;
    EXPECT_EQ(finished.error.find("no usable target"), std::string::npos) << finished.error;
    const std::string page = folder.Read("out/build-k.ditamap/xhtml/k.html");
    for (const char* text : {">P40<", ">valve<", ">hose<", ">first<", ">middle<", ">last<"}) {
        EXPECT_NE(page.find(text), std::string::npos) << text << page;
    }
}

TEST_F(CommandLine, OptionsOfToolkitsAndStylesheetsReachThem) {
    const std::string command = test::WriteScript(folder, "ot/bin/dita", "toolkit <p/>\n");
    folder.Write("src/keys.ditamap", "<map><keydef keys='k' href='a.dita' deliveryTarget='web'/></map>");
    const Finished toolkit = Run({"publish", "src/a.dita", "-o", "out", "--toolkit", command, "--transtype",
                                  "mine", "--toolkit-param", "args.css=x.css", "--resource",
                                  "src/keys.ditamap", "--attributes", "deliveryTarget"});
    EXPECT_EQ(toolkit.status, 0) << toolkit.error;
    EXPECT_EQ(toolkit.error.find("does not occur"), std::string::npos) << toolkit.error;
    EXPECT_NE(toolkit.out.find("DITA Open Toolkit, " + command), std::string::npos);
    const std::string properties = folder.Read("ot/bin/properties");
    for (const char* line : {"transtype=mine\n", "args.css=x.css\n", "/out/keys.ditamap\n"}) {
        EXPECT_NE(properties.find(line), std::string::npos) << line << properties;
    }
    folder.Write("param.xsl",
                 "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
                 "<xsl:param name='a'/><xsl:param name='b'/><xsl:template match='/'><html><body>"
                 "<xsl:value-of select='concat($a, $b)'/></body></html></xsl:template>"
                 "</xsl:stylesheet>");
    const Finished stylesheet = Run({"publish", "src/plain.xml", "-o", "out2", "--xslt", "param.xsl",
                                     "--param", "a=1 + 1", "--string-param", "b=1 + 1"});
    EXPECT_EQ(stylesheet.status, 0) << stylesheet.error;
    EXPECT_NE(folder.Read("out2/plain.html").find(">21 + 1<"), std::string::npos);
}

// The toolkits have tests of their own.
TEST_F(CommandLine, EachEnginePublishesAwkwardNames) {
    std::vector<std::string> names{"it's $HOME $(touch hacked) `touch hacked` a%20b#c;d", "日本 äö+=!"};
    if (test::kHasAnyNames) {
        names.push_back("a?b \"c\" d");
    }
    const std::string page = "<html><body><p audience='expert'>Press it.</p></body></html>";
    const std::string newer =
        std::string(kStylesheet).replace(std::string(kStylesheet).find("1.0"), 3, "2.0");
    for (const std::string& name : names) {
        const std::string stem = name + "/" + name;
        folder.Write(stem + ".dita", kTopic);
        const std::string reference =
            RelativeReference({folder.Native("m")}, {folder.Native(stem + ".dita")});
        folder.Write(name + ".ditamap", "<map><topicref href=\"" + reference + "\"/></map>");
        folder.Write(stem + ".xml", page);
        folder.Write(stem + ".xsl", kStylesheet);
        folder.Write(stem + ".2.xsl", newer);
        test::WriteScript(folder, stem, "copy $1 $stem.html\n");
        std::vector<std::vector<std::string>> engines{{name + ".ditamap"},
                                                      {stem + ".xml", "--xslt", stem + ".xsl"}};
        // Wine's command interpreter expands a "%2" in the value of %1 once more.
        if (test::kHasAnyNames || name.find('%') == std::string::npos) {
            engines.push_back({stem + ".xml", "--no-transform", "--post-script", test::ScriptFile(stem)});
        }
        if (SaxonProblem().empty()) {
            engines.push_back({stem + ".xml", "--xslt", stem + ".2.xsl"});
        }
        for (std::vector<std::string> arguments : engines) {
            const std::string last = arguments.back();
            const std::string out = "out " + name;
            arguments.insert(arguments.end(), {"-o", out, "--attributes", "audience", "--force"});
            arguments.insert(arguments.begin(), "publish");
            const Finished finished = Run(arguments);
            EXPECT_EQ(finished.status, 0) << last << finished.error;
            std::string pages;
            for (const auto& entry :
                 fs::recursive_directory_iterator(platform::PathFromUtf8(folder.Native(out)))) {
                const fs::path file = entry.path();
                pages += file.extension() == ".html" ? folder.Read(platform::Utf8FromPath(file)) : "";
            }
            EXPECT_NE(pages.find("audienceQL_SEPexpertQL_SEP\">Press"), std::string::npos) << last << pages;
        }
    }
    EXPECT_FALSE(folder.Exists("hacked"));
}

// The toolkit makes the folder of the document itself, so the module leaves topics beside it in place.
TEST_F(CommandLine, GuideWithTopicsOutsideItsFolderIsPublishedWithoutFindings) {
    const Finished finished = Run(
        {"publish", std::string(VENTRIX_EXAMPLES_FOLDER) + "/pump-guide/pump-guide.ditamap", "-o", "out"});
    EXPECT_EQ(finished.status, 0) << finished.error;
    EXPECT_EQ(finished.error, "");
    EXPECT_TRUE(folder.Exists("out/build-pump-guide.ditamap/xhtml/shared/contact.html"));
}

TEST_F(CommandLine, AbsoluteReferencesLeadToTheCopiesInThePackage) {
    folder.Write("m.ditamap", "<map><topicref href=\"" + folder.Native("deep/t.dita") + "\"/></map>");
    folder.Write("deep/t.dita",
                 "<topic id=\"t\"><title>T</title><body><p audience=\"expert\">See <image href=\"" +
                     folder.Native("img/i.png") + "\"/></p></body></topic>");
    folder.Write("img/i.png", "image");
    const Finished finished = Run({"publish", "m.ditamap", "-o", "out", "--attributes", "audience"});
    EXPECT_EQ(finished.status, 0) << finished.error;
    const std::string page = folder.Read("out/build-m.ditamap/xhtml/deep/t.html");
    EXPECT_NE(page.find("data-twtags=\"audienceQL_SEPexpertQL_SEP\">See <img src=\"../img/i.png\""),
              std::string::npos)
        << page;
    EXPECT_EQ(folder.Read("out/build-m.ditamap/xhtml/img/i.png"), "image");
}

TEST_F(CommandLine, PublishReportsFindings) {
    const auto publish = [](std::vector<std::string> further) {
        further.insert(further.begin(), {"publish", "src/plain.xml", "--attributes", "kind"});
        return further;
    };
    std::string html = kStylesheet;
    folder.Write("html.xsl", html.replace(html.find("\"xml\""), 5, "\"html\""));
    folder.Write("raw.xsl", html.replace(html.find("<body>"), 6,
                                         "<body><xsl:text disable-output-escaping='yes'>&lt;br></xsl:text>"));
    test::WriteScript(folder, "script", "print printed by a script\nexit 3\n");
    const Row rows[] = {
        {publish({"-o", "o1", "--xslt", "page.xsl"}), 0, "pages:     1",
         "places that are not decoded: 1; changed files: 1"},
        {publish({"-o", "o1", "--xslt", "page.xsl", "--keep-markers"}), 0, "pages:     1",
         "into which the transformation copied marker text: 1; the first is in " +
             folder.Native("o1/plain.html") + ": <meta content>"},
        {publish({"-o", "o2", "--xslt", "html.xsl"}), 0, "pages:     1", "changed files: 1"},
        {publish({"-o", "o2", "--xslt", "raw.xsl", "--map", "--viewer"}), 1, "pages:     1",
         "so that its text was not decoded and what it preserved is lost; it is not in the map; it has no "
         "viewer; "
         "let the transformation write XHTML"},
        {publish({"-o", "o3", "--xslt", "page.xsl", "--out-file", "elsewhere.html"}), 1, "pages:     1",
         folder.Native("elsewhere.html") + ": pages with text that was not decoded"},
        {publish({"-o", "o4", "--xslt", "broken.xsl"}), 6, "", "broken.xsl cannot be used: "},
        {publish({"-o", "o5", "--dita-ot", "--toolkit", "none"}), 6, "",
         "none contains no DITA Open Toolkit"},
        {publish({"-o", "o6", "--post-script", test::ScriptFile("script")}), 6, "",
         test::ScriptFile("script") + " failed with exit status 3"},
        {publish({"-o", "o8", "--xslt", "page.xsl", "--log", "none/log.txt"}), 1,
         "result: ", folder.Native("none/log.txt") + " cannot be written; the log of this run is "},
        {publish({"-o", "o8", "--xslt", "page.xsl", "--log", "none/log.txt"}), 1, "report.log\n",
         "cannot be written"},
        {publish({"-o", "/", "--xslt", "page.xsl"}), 5, "", "home folder or a root folder; choose"},
        {publish({"-o", "o9", "--xslt", "broken.xsl", "--color", "always"}), 6, "", "\033[31merror: "},
    };
    for (const Row& row : rows) {
        ExpectRow(row, Run(row.arguments));
    }
}

TEST_F(CommandLine, PublishNamesFilesThatCannotBeLoaded) {
    folder.Write("map.ditamap",
                 "<map><title>M</title><topicref href=\"src/a.dita\"/><topicref href=\"open.dita\"/>"
                 "<topicref href=\"entity.dita\"/><topicref href=\"none.dita\"/></map>");
    folder.Write("open.dita", "<topic id=\"b\"><title>B</title><body><p>open</body></topic>");
    folder.Write("entity.dita", "<topic id=\"e\"><title>&undeclared;</title></topic>");
    const json object = json::parse(Run({"publish", "map.ditamap", "-o", "out", "--xpath", "--json"}).out);
    ASSERT_EQ(object["failed"].size(), 2U) << object;
    EXPECT_EQ(object["failed"][0]["file"], folder.Native("open.dita"));
    EXPECT_NE(object["failed"][0]["reason"].get<std::string>().find("mismatch"), std::string::npos) << object;
    EXPECT_EQ(object["failed"][1]["file"], folder.Native("entity.dita"));
    EXPECT_NE(object["failed"][1]["reason"].get<std::string>().find("undefined entity"), std::string::npos);
    EXPECT_EQ(object["missing"], json::array({folder.Native("none.dita")}));
}

TEST_F(CommandLine, InterruptedRunKeepsTheSourceAndMarksTheOutput) {
    test::WriteScript(folder, "waits", "number $here/waits.pid\nsleep 30\n");
    const std::string before = folder.Read("src/plain.xml");
    test::Child run({VENTRIX_PROGRAM,
                     {"publish", "src/plain.xml", "-o", "out", "--xpath", "--no-transform", "--pre-script",
                      test::ScriptFile("waits")},
                     folder.Native(),
                     folder.Native("printed"),
                     folder.Native("error")});
    ASSERT_TRUE(test::Eventually([&] { return test::IsRunning(folder.Native("waits.pid")); }));
    run.End(test::Ending::kInterrupt);
    EXPECT_EQ(run.Await(), test::StatusAfter(test::Ending::kInterrupt));
    EXPECT_EQ(folder.Read("printed"), "");
    EXPECT_EQ(folder.Read("src/plain.xml"), before);
    EXPECT_EQ(Run({"publish", "src/plain.xml", "-o", "out", "--xslt", "page.xsl"}).status, 0);
}

TEST_F(CommandLine, UnwritableStandardOutputIsReported) {
    const Finished full = Run({"validate", "src/a.dita"}, {.standardOutput = "/dev/full"});
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.error.find("could not be written to standard output"), std::string::npos);

    // A reader such as `head` closes the pipe when it has read enough.
    const Finished gone =
        Run({"-c", "(\"$0\" validate src/a.dita; echo $? > status) | true", VENTRIX_PROGRAM},
            {.program = "/bin/sh"});
    EXPECT_EQ(folder.Read("status"), "0\n");
    EXPECT_EQ(gone.error, "");
}

TEST_F(CommandLine, ModuleThatCannotBeLoadedIsReportedInOneLine) {
    const std::string program = "home/bin/" + fs::path(VENTRIX_PROGRAM).filename().string();
    const std::string module = folder.Native("home/src/Ventrix" + std::string(platform::LibrarySuffix()));
    fs::create_directories(folder.Native("home/bin"));
    fs::create_directories(folder.Native("home/src"));
    fs::copy(VENTRIX_PROGRAM, folder.Native(program));
    const test::RunSettings moved{.program = folder.Native(program)};
    const auto expectError = [&](const std::string& message) {
        const Finished finished = Run({"validate", "src/a.dita"}, moved);
        EXPECT_EQ(finished.status, 7);
        EXPECT_EQ(finished.out, "");
        EXPECT_EQ(finished.error.substr(0, message.size()), message);
        EXPECT_EQ(std::ranges::count(finished.error, '\n'), 1) << finished.error;
    };
    expectError("error: the module is missing: " + module);
    folder.Write(module, "text");
    expectError("error: the module cannot be loaded: ");
    fs::remove(module);
    fs::copy(VENTRIX_OTHER_LIBRARY, module);
    expectError("error: the module has no export Q_ApiClientInit: " + module);
}

}  // namespace
}  // namespace ventrix::desk
