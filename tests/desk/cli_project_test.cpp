#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "desk/cli/exit_status.h"
#include "desk/cli/project_file.h"
#include "desk/command_line.h"
#include "support/links.h"
#include "support/test_drives.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using test::Finished;
using test::kDriveZ;
using test::RunVentrix;

constexpr char kTopic[] =
    "<topic id=\"t\"><title>Title</title><body><p audience=\"expert\">Press <uicontrol>OK</uicontrol>.</p>"
    "</body></topic>";

TEST(ProjectFile, ErrorsNameTheLineAndSayWhatToDo) {
    const struct {
        const char* text;
        const char* message;  ///< After "/p/ventrix.toml:".
    } rows[] = {
        {"a = [1,\n", "1:9: "},
        {"[[publish]\n", "1:"},
        {"\nlog = \"a\nquiet = true\n",
         "2:9: Error while parsing string: unescaped control characters other than TAB (U+0009) are "
         "explicitly "
         "prohibited; the value on this line does not end: look for a missing quote or bracket"},
        {"log = a.log\r\n",
         "1:7: Error while parsing value: could not determine value type; write text in quotes"},
        {"log = \"\xE9\"\n", "1:7: Encountered invalid utf-8 sequence; save the file as UTF-8"},
        {"quiet = true\nquiet = true\n",
         "2:9: Error while parsing key-value pair: cannot redefine existing boolean 'quiet'; write each key "
         "once"},
        {"\natributes = \"a\"\n", "2: unknown key 'atributes'; did you mean 'attributes'?"},
        {"pre_script = \"a\"\n", "1: unknown key 'pre_script'; did you mean 'pre-script'?"},
        {"[[publish]]\nname = \"a\"\ndocment = \"d\"\n",
         "3: unknown key 'docment'; did you mean 'document'?"},
        {"zzzzz = 1\n", "1: unknown key 'zzzzz'; the keys are the long options"},
        {"[[publish]]\nformat = \"sarif\"\n", "2: unknown key 'format'"},
        {"name = \"a\"\n[[publish]]\n", "1: 'name' is a key of a deliverable; write [[publish]] above it"},
        {"json = true\n", "1: 'json' can be given on the command line only"},
        {"help = true\n", "1: unknown key 'help'"},
        {"xpath = \"yes\"\n", "1: xpath: the value must be true or false, without quotes"},
        {"xpath = 1\n", "1: xpath: the value must be true or false"},
        {"log = 5\n", "1: log: the value must be a string in quotes"},
        {"log = [\"a\", \"b\"]\n", "1: log: the value must be a string in quotes"},
        {"attributes = 5\n", "1: attributes: the value must be a string in quotes, or an array"},
        {"attributes = [\n\"a\",\n5]\n", "3: attributes: the value must be a string in quotes"},
        {"attributes = { a = \"b\" }\n", "1: attributes: the value must be a string in quotes, or an array"},
        {"param = { a = 1 }\n", "1: param.a: the value must be a string in quotes"},
        {"log = \"\"\n", "1: log: the value is empty"},
        {"log = \"a\\u0000b\"\n", "1: log: the value contains a null character"},
        {"publish = 1\n", "1: 'publish' must be a list of tables; write [[publish]]"},
        {"\n[publish]\nname = \"a\"\n", "2: 'publish' must be a list of tables; write [[publish]]"},
        {"\n[[publish]]\ndocument = \"d\"\n", "2: the deliverable has no name"},
        {"\n[[publish]]\nname = \"a\"\n", "2: the deliverable 'a' has no document"},
        {"[[publish]]\nname = \"a/b\"\n", "2: name: 'a/b' must not contain a slash"},
        {"[[publish]]\nname = \"a\"\ndocument = \"d\"\n[[publish]]\nname = \"a\"\n",
         "5: name: 'a' is the name of the deliverable at line 1 too"},
    };
    for (const auto& row : rows) {
        std::string message;
        try {
            ParseProject(row.text, {kDriveZ + "/p/ventrix.toml"});
        } catch (const Stop& stop) {
            EXPECT_EQ(stop.status, kExitUsage);
            message = stop.text;
        }
        const std::string expected = kDriveZ + "/p/ventrix.toml:" + row.message;
        EXPECT_EQ(message.substr(0, expected.size()), expected) << row.text;
    }
}

TEST(ProjectFile, PathsStartAtTheFolderOfTheFile) {
    const Project project = ParseProject(
        "document = \"d.ditamap\"\nxslt = \"../s.xsl\"\ncatalog = \"/c.xml\"\ntoolkit = \"installed\"\n"
        "attributes = [\"a,b\", \"c\"]\ndrive = { C = \"c\" }\nstring-param = { x = \"y z\" }\n"
        "[[publish]]\nname = \"a\"\noutput = \"out\"\ntoolkit = \"ot\"\n",
        {kDriveZ + "/p/q/ventrix.toml"});
    const auto value = [](const std::vector<ProjectSetting>& settings, const std::string& option) {
        const auto found = std::ranges::find(settings, option, &ProjectSetting::option);
        return found == settings.end() ? std::vector<std::string>() : found->values;
    };
    using List = std::vector<std::string>;
    EXPECT_EQ(value(project.defaults, "xslt"), List{kDriveZ + "/p/s.xsl"});
    EXPECT_EQ(value(project.defaults, "catalog"), List{kDriveZ + "/c.xml"});
    EXPECT_EQ(value(project.defaults, "toolkit"), List{"installed"});
    EXPECT_EQ(value(project.defaults, "attributes"), (List{"a,b", "c"}));
    EXPECT_EQ(value(project.defaults, "drive"), List{"C=" + kDriveZ + "/p/q/c"});
    EXPECT_EQ(value(project.defaults, "string-param"), List{"x=y z"});
    ASSERT_EQ(project.deliverables.size(), 1U);
    EXPECT_EQ(project.deliverables[0].document.utf8, kDriveZ + "/p/q/d.ditamap") << "the default";
    EXPECT_EQ(value(project.deliverables[0].settings, "output"), List{kDriveZ + "/p/q/out"});
    EXPECT_EQ(value(project.deliverables[0].settings, "toolkit"), List{kDriveZ + "/p/q/ot"});
}

/// Runs commands in a folder with two documents and a project file.
class ProjectCommands : public testing::Test {
  protected:
    ProjectCommands() {
        folder.Write("src/a.dita", kTopic);
        folder.Write("src/b.dita", kTopic);
        folder.Write("page.xsl",
                     "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">"
                     "<xsl:output method=\"xml\"/><xsl:template match=\"/\"><html><body><p>"
                     "<xsl:value-of select=\".\"/></p></body></html></xsl:template></xsl:stylesheet>");
        folder.Write("ventrix.toml",
                     "attributes = \"audience\"\n"
                     "[[publish]]\nname = \"a\"\ndocument = \"src/a.dita\"\noutput = \"out/a\"\n"
                     "[[publish]]\nname = \"b\"\ndocument = \"src/b.dita\"\noutput = \"out/b\"\n"
                     "attributes = []\nelements = [\"uicontrol\"]\nxpath = true\n");
    }

    Finished Run(std::vector<std::string> arguments) { return RunVentrix(folder, std::move(arguments)); }

    std::string Page(const std::string& name) const {
        return folder.Read("out/" + name + "/build-" + name + ".dita/xhtml/" + name + ".html");
    }

    test::TestFolder folder;
};

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST_F(ProjectCommands, PublishAlonePublishesEverythingWithItsOptions) {
    const Finished finished = Run({"publish"});
    EXPECT_EQ(finished.status, 0) << finished.error;
    EXPECT_TRUE(finished.out.starts_with("== a\nresult: ")) << finished.out;
    EXPECT_TRUE(Has(finished.out, "\n== b\nresult: ")) << finished.out;
    EXPECT_TRUE(finished.out.ends_with("== 2 of 2 deliverables published\n")) << finished.out;
    EXPECT_TRUE(Has(finished.error, "options from " + folder.Native("ventrix.toml")));
    EXPECT_TRUE(Has(Page("a"), "audienceQL_SEPexpertQL_SEP\"")) << Page("a");
    EXPECT_FALSE(Has(Page("b"), "audienceQL_SEP")) << "the deliverable's own list counts";
    EXPECT_TRUE(Has(Page("b"), "data-qlxpathQL_SEP")) << Page("b");
}

TEST_F(ProjectCommands, NameOrDocumentSelectsADeliverable) {
    EXPECT_EQ(Run({"publish", "b"}).status, 0);
    EXPECT_FALSE(folder.Exists("out/a"));
    EXPECT_EQ(Run({"publish", "src/../src/a.dita"}).status, 0);
    EXPECT_TRUE(folder.Exists("out/a"));

    const Finished unknown = Run({"publish", "c"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_TRUE(Has(unknown.error, "error: 'c' is neither a file nor a deliverable of " +
                                       folder.Native("ventrix.toml") + "; did you mean 'a'?"))
        << unknown.error;
    EXPECT_TRUE(Has(Run({"publish", "other"}).error, "(deliverables: 'a', 'b')"));
    EXPECT_EQ(Run({"publish", "src/none.dita"}).status, 2) << "a document, but without an output";
    EXPECT_EQ(Run({"publish", "src/none.dita", "-o", "out/n"}).status, 3);

    folder.Write("a", kTopic);
    const Finished both = Run({"publish", "a", "--dry-run"});
    EXPECT_EQ(both.status, 0) << both.error;
    EXPECT_TRUE(Has(both.error, "'a' is taken as the deliverable of this name; for the file write ./a"));
}

TEST_F(ProjectCommands, TheCommandLineWins) {
    EXPECT_EQ(Run({"publish", "b", "-o", "mine", "--elements", "p"}).status, 0);
    EXPECT_FALSE(folder.Exists("out"));
    const std::string page = folder.Read("mine/build-b.dita/xhtml/b.html");
    EXPECT_FALSE(Has(page, "<uicontrol")) << page;
    EXPECT_TRUE(Has(page, "data-qlxpathQL_SEP")) << page;

    folder.Write("ventrix.toml",
                 "dita-ot = true\n[[publish]]\nname = \"a\"\ndocument = \"src/a.dita\"\n"
                 "output = \"out/a\"\nxpath = true\n");
    EXPECT_EQ(Run({"publish", "a", "--xslt", "page.xsl", "--xpath=false"}).status, 0)
        << "--xslt replaces the option that it excludes";
    EXPECT_EQ(folder.Read("out/a/a.html").find("data-qlxpath"), std::string::npos);
    folder.Write("ventrix.toml",
                 "dita-ot = true\nxpath = true\n[[publish]]\nname = \"a\"\n"
                 "document = \"src/a.dita\"\noutput = \"out/a\"\nxslt = \"page.xsl\"\n"
                 "xpath = false\n");
    EXPECT_EQ(Run({"publish"}).status, 0) << "a deliverable replaces a default that it excludes";
    EXPECT_TRUE(folder.Exists("out/a/a.html"));
    EXPECT_EQ(folder.Read("out/a/a.html").find("data-qlxpath"), std::string::npos);
}

TEST_F(ProjectCommands, AListIsEmptiedOnTheCommandLine) {
    const Finished emptied = Run({"publish", "a", "--attributes="});
    EXPECT_EQ(emptied.status, 0) << emptied.error;
    EXPECT_FALSE(Has(folder.Read("out/a/build-a.dita/xhtml/a.html"), "audience"));
    EXPECT_TRUE(
        Has(emptied.error, "--attributes= leaves out the value of " + folder.Native("ventrix.toml") + ":"))
        << emptied.error;
    for (const char* option : {"--elements=", "--attributes", "--target-attr="}) {
        EXPECT_EQ(Run({"publish", "a", option}).status, 2) << option;
    }
    EXPECT_EQ(Run({"publish", "a", "--attributes", ""}).status, 2);
}

TEST_F(ProjectCommands, ValidationFindsWhatAPublishWouldReport) {
    const std::string start = "[[publish]]\nname = \"a\"\ndocument = \"src/a.dita\"\noutput = \"out/a\"\n";
    const struct {
        std::string text, message;
        int status;
    } rows[] = {
        {"attributes = \"audiense\"\n" + start, "did you mean 'audience'? [misspelled-name]", 1},
        {start + "xslt = \"newer.xsl\"\nxslt-engine = \"libxslt\"\n", "[stylesheet-version]", 1},
        {start + "xslt = \"broken.xsl\"\n", "broken.xsl cannot be used", 6},
        {start + "pre-script = \"page.xsl\"\n", "page.xsl is not executable", 2},
        {start + "transtype = \"x\"\n", "--transtype has no effect without an installed toolkit", 2},
        {start + "xslt = \"page.xsl\"\n", "", 0},
    };
    folder.Write("newer.xsl", "<x:stylesheet version='3.0' xmlns:x='http://www.w3.org/1999/XSL/Transform'/>");
    folder.Write("broken.xsl", "<x:stylesheet");
    folder.Write("src/a.dita",
                 "<topic id='t'><title>T</title><body><p audience='x'><xref href='#t/none'>x</xref></p>"
                 "</body></topic>");
    for (const auto& row : rows) {
        folder.Write("ventrix.toml", row.text);
        const Finished validated = Run({"validate"});
        EXPECT_TRUE(Has(validated.error, row.message)) << row.message << '\n' << validated.error;
        EXPECT_EQ(Has(validated.error, "[broken-link]"), row.status == 1 && !Has(row.text, "xslt"))
            << "the stylesheet does not make links: " << validated.error;
        EXPECT_EQ(validated.status, row.status) << validated.error;
        const Finished published = Run({"publish"});
        EXPECT_TRUE(Has(published.error, row.message)) << row.message << '\n' << published.error;
    }
}

TEST_F(ProjectCommands, DefaultsHoldForADocumentBesideTheFile) {
    fs::rename(folder.Native("ventrix.toml"), folder.Native("moved.toml"));
    folder.Write("src/ventrix.toml", "output = \"../out/here\"\nattributes = \"audience\"\n");
    EXPECT_EQ(Run({"publish", "src/a.dita"}).status, 0);
    EXPECT_TRUE(Has(folder.Read("out/here/build-a.dita/xhtml/a.html"), "audienceQL_SEP"));
    EXPECT_EQ(Run({"publish", "a", "--config", "moved.toml"}).status, 0) << "beats the file beside it";
    EXPECT_TRUE(folder.Exists("out/a"));
    const Finished nothing = Run({"publish", "--config", "src/ventrix.toml"});
    EXPECT_EQ(nothing.status, 2);
    EXPECT_TRUE(Has(nothing.error, "src/ventrix.toml names no document; add one")) << nothing.error;
}

TEST_F(ProjectCommands, InvalidOptionsAreReportedWithTheirLineBeforeAnythingRuns) {
    const std::string start = "[[publish]]\nname = \"a\"\ndocument = \"src/a.dita\"\noutput = \"out/a\"\n";
    const std::string second = "[[publish]]\nname = \"b\"\ndocument = \"src/b.dita\"\noutput = \"out/b\"\n";
    const std::string file = folder.Native("ventrix.toml");
    folder.Write("src/data.json", "{}");
    folder.Write("src/b.dita",
                 "<topic id='t'><title>T</title><body><pre><coderef href='data.json'/></pre></body></topic>");
    const struct {
        std::string text, message;
    } rows[] = {
        {start + "[[publish]]\nname = \"b\"\ndocument = \"src/b.dita\"\n",
         file + ":5: deliverable 'b': no folder for the result; add output = "},
        {"document = \"src/a.dita\"\n", file + ":1: no folder for the result; add output = "},
        {start + "attributes = \"a b\"\n", file + ":5: --attributes: 'a b' contains spaces"},
        {start + "color = \"red\"\n", file + ":5: --color: red not in"},
        {start + "xslt = \"none.xsl\"\n", file + ":5: --xslt: " + folder.Native("none.xsl") + " is not a"},
        {start + "xpath-attr = \"x\"\n", file + ":5: --xpath-attr: 'x' has no effect without --xpath"},
        {start + "dita-ot = true\nxslt = \"page.xsl\"\n", "excludes"},
        {start + "log = \"ventrix.toml\"\n", file + ":5: --log: " + file + " is an input of this run"},
        {start + "[[publish]]\nname = \"b\"\ndocument = \"src/b.dita\"\noutput = \"src/../out/a/\"\n",
         file + ":8: output: the deliverables 'a' and 'b' would replace each other's results"},
        {start + "[[publish]]\nname = \"b\"\ndocument = \"src/b.dita\"\noutput = \"out\"\n",
         file + ":8: output: the deliverables 'a' and 'b'"},
        {start + "report = \"out/b/a.html\"\n" + second,
         file + ":9: output: the deliverables 'a' and 'b' would replace each other's results"},
        {start + "report = \"r.html\"\n" + second + "log = \"r.html\"\n",
         file + ":10: log: the deliverables 'a' and 'b' would replace each other's results"},
        {start + "log = \"src/b.dita\"\n" + second,
         file + ":5: log: " + folder.Native("src/b.dita") + " is an input of the deliverable 'b'"},
        {start + "report = \"src/data.json\"\n" + second,
         file + ":5: report: " + folder.Native("src/data.json") + " is an input of the deliverable 'b'"},
        {start + second + "out-file = \"out/a.log\"\n",
         file + ":9: out-file: the deliverables 'a' and 'b' would replace each other's results"},
        {start + second + "css = \"out/a.log\"\n",
         file + ":4: log: " + folder.Native("out/a.log") + " is an input of the deliverable 'b'"},
    };
    for (const auto& row : rows) {
        folder.Write("ventrix.toml", row.text);
        const Finished finished = Run({"publish"});
        EXPECT_EQ(finished.status, 2) << row.text;
        EXPECT_TRUE(Has(finished.error, row.message)) << row.message << '\n' << finished.error;
        EXPECT_FALSE(folder.Exists("out")) << row.text;
        if (!Has(row.message, "no folder for the result")) {
            const Finished validated = Run({"validate"});
            EXPECT_EQ(validated.status, 2) << row.text;
            EXPECT_TRUE(Has(validated.error, row.message)) << row.message << '\n' << validated.error;
        }
    }
    folder.Write("ventrix.toml", start + "force = true\n");
    EXPECT_EQ(Run({"publish", "-o", "."}).status, 5) << "a folder with the project file is refused";
}

TEST_F(ProjectCommands, AProjectFileThatCannotBeReadIsReported) {
    fs::remove(folder.Native("ventrix.toml"));
    fs::create_directory(folder.Native("ventrix.toml"));
    const std::string message = "the project file " + folder.Native("ventrix.toml") + " cannot be read: ";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"publish"}, {"publish", "src/a.dita", "-o", "o"}, {"validate"}}) {
        const Finished finished = Run(arguments);
        EXPECT_EQ(finished.status, 2);
        EXPECT_TRUE(Has(finished.error, message)) << finished.error;
    }
    fs::remove(folder.Native("ventrix.toml"));
    test::MakeLink("nowhere", folder.Native("ventrix.toml"));
    if (test::kHasLinks) {
        EXPECT_TRUE(Has(Run({"publish"}).error, message));
        EXPECT_TRUE(Has(Run({"init", "src/a.dita"}).error, "ventrix.toml exists already"));
    }
    EXPECT_FALSE(folder.Exists("o"));
}

TEST_F(ProjectCommands, SeveralDeliverablesCannotShareAPlaceOfTheCommandLine) {
    const Finished finished = Run({"publish", "-o", "one"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_TRUE(Has(finished.error, "--output: the deliverables 'a', 'b' cannot share it; name the one"))
        << finished.error;
    EXPECT_FALSE(folder.Exists("one"));
}

TEST_F(ProjectCommands, TheWorstStatusCountsAndTheOthersArePublished) {
    folder.Write("src/a.dita", "<topic");
    const Finished finished = Run({"publish"});
    EXPECT_EQ(finished.status, 3);
    EXPECT_TRUE(finished.out.ends_with("== 1 of 2 deliverables published\n")) << finished.out;
    EXPECT_TRUE(Has(Page("b"), "Press"));

    const Finished data = Run({"publish", "--json"});
    std::istringstream lines(data.out);
    std::string first;
    std::string second;
    std::getline(lines, first);
    std::getline(lines, second);
    EXPECT_EQ(json::parse(first).at("deliverable"), "a");
    EXPECT_EQ(json::parse(first).at("exitStatus"), 3);
    EXPECT_EQ(json::parse(second).at("deliverable"), "b");
    EXPECT_EQ(json::parse(second).at("exitStatus"), 0);
}

TEST_F(ProjectCommands, DrivesOfOneDeliverableDoNotReachTheNext) {
    folder.Write("src/a.dita",
                 "<topic id=\"t\"><title>T</title><body><p><image href=\"D:/i.png\"/></p>"
                 "</body></topic>");
    folder.Write("src/b.dita", folder.Read("src/a.dita"));
    folder.Write("d/i.png", "png");
    folder.Write("ventrix.toml",
                 "[[publish]]\nname = \"a\"\ndocument = \"src/a.dita\"\noutput = \"out/a\"\n"
                 "drive = { D = \"d\" }\n"
                 "[[publish]]\nname = \"b\"\ndocument = \"src/b.dita\"\noutput = \"out/b\"\n");
    const Finished finished = Run({"validate"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_TRUE(Has(finished.error, "b.dita:1: D:/i.png: the drive is not mapped")) << finished.error;
    EXPECT_FALSE(Has(finished.error, "a.dita:1: D:/i.png: the drive is not mapped")) << finished.error;
}

TEST_F(ProjectCommands, InitWritesAFileThatPublishes) {
    fs::remove(folder.Native("ventrix.toml"));
    const Finished finished = Run({"init", "src/a.dita"});
    EXPECT_EQ(finished.status, 0) << finished.error;
    EXPECT_EQ(finished.out, "wrote " + folder.Native("ventrix.toml") + "\n");
    const std::string text = folder.Read("ventrix.toml");
    for (const char* line : {"document = \"src/a.dita\"\n", "\nattributes = [\"audience\"]\n",
                             "\nelements = [\"uicontrol\"]\n", "\n#preserve-xpath = [\"QUERY\"]\n"}) {
        EXPECT_TRUE(Has(text, line)) << line << text;
    }
    EXPECT_EQ(Run({"publish"}).status, 0);
    EXPECT_TRUE(folder.Exists("out/build-a.dita/xhtml/a.html"));

    const Finished again = Run({"init", "src/b.dita"});
    EXPECT_EQ(again.status, 2);
    EXPECT_TRUE(Has(again.error, "ventrix.toml exists already"));
    EXPECT_EQ(folder.Read("ventrix.toml"), text);
}

TEST_F(ProjectCommands, EveryLineThatInitCommentsOutIsAKey) {
    fs::remove(folder.Native("ventrix.toml"));
    ASSERT_EQ(Run({"init", "src/a.dita"}).status, 0);
    std::istringstream lines(folder.Read("ventrix.toml"));
    std::string text;
    int keys = 0;
    for (std::string line; std::getline(lines, line);) {
        const bool isKey = line.size() > 1 && line[0] == '#' && line[1] != ' ';
        text += (isKey && !line.starts_with("#quiet") ? line.substr(1) : line) + '\n';
        keys += isKey ? 1 : 0;
    }
    EXPECT_GT(keys, 30);
    EXPECT_NO_THROW(ParseProject(text, {"/ventrix.toml"})) << text;
}

TEST_F(ProjectCommands, InitTakesTheOnlyMap) {
    fs::remove(folder.Native("ventrix.toml"));
    EXPECT_TRUE(Has(Run({"init"}).error, "there is no DITA map in this folder"));
    const std::string guide = test::kHasAnyNames ? "my \"guide\"" : "my 'guide'";
    folder.Write(guide + ".ditamap", "<map><topicref href=\"src/a.dita\"/></map>");
    EXPECT_EQ(Run({"init"}).status, 0);
    EXPECT_EQ(Run({"publish", guide}).status, 0);
    fs::remove(folder.Native("ventrix.toml"));
    folder.Write("other.ditamap", "<map/>");
    EXPECT_TRUE(Has(Run({"init"}).error, "there are several DITA maps in this folder"));
    EXPECT_TRUE(Has(Run({"init", "none.dita"}).error, "none.dita cannot be read"));
    EXPECT_FALSE(folder.Exists("ventrix.toml"));
}

TEST_F(ProjectCommands, AnErrorOfTheCommandLineDoesNotNameTheProjectFile) {
    const Finished finished = Run({"publish", "a", "--param", "x=1"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_TRUE(finished.error.starts_with("error: --param: 'x=1' has no effect")) << finished.error;
}

TEST_F(ProjectCommands, DryRunPrintsWhatWouldHappenAndChangesNothing) {
    const Finished fresh = Run({"publish", "a", "--dry-run"});
    EXPECT_EQ(fresh.status, 0) << fresh.error;
    EXPECT_TRUE(
        Has(fresh.out, "package (1)\n  " + folder.Native("src/a.dita") +
                           "\ntransform (1)\n  toolkit: built-in\noutput:    " + folder.Native("out/a") +
                           "\nreplace (0)\nkeep (0)\nwrite (1)\n  log " + folder.Native("out/a.log") + '\n'))
        << fresh.out;
    EXPECT_FALSE(folder.Exists("out"));
    const Finished further = Run({"publish", "a", "--dry-run", "--report", "r.html", "--map", "--viewer"});
    EXPECT_EQ(further.status, 0) << further.error;
    EXPECT_TRUE(further.out.ends_with("\n  report " + folder.Native("r.html") +
                                      "\n  map ventrix-map.json beside the start page"
                                      "\n  viewer ventrix.js and ventrix.css beside the start page\n"))
        << further.out;
    EXPECT_EQ(Run({"publish", "--dry-run"}).out.find("published"), std::string::npos);
    EXPECT_FALSE(folder.Exists("out"));

    ASSERT_EQ(Run({"publish", "a"}).status, 0);
    folder.Write("out/a/mine.txt", "keep");
    folder.Write("out/a/build-a.dita/xhtml/a.html", "edited");
    const std::string log = folder.Read("out/a.log");
    const Finished later = Run({"publish", "a", "--dry-run"});
    EXPECT_EQ(later.status, 0) << later.error;
    EXPECT_TRUE(Has(later.out,
                    "keep (2)\n  build-a.dita/xhtml/a.html (edited; becomes "
                    "build-a.dita/xhtml/a.html.edited)\n  mine.txt\n"))
        << later.out;
    EXPECT_TRUE(Has(later.out, "\n  build-a.dita/buildlog-xhtml.txt\n")) << later.out;
    EXPECT_EQ(folder.Read("out/a/build-a.dita/xhtml/a.html"), "edited");
    EXPECT_EQ(folder.Read("out/a.log"), log);

    folder.Write("full/mine.txt", "keep");
    EXPECT_EQ(Run({"publish", "a", "-o", "full", "--dry-run"}).status, 5);
    EXPECT_EQ(Run({"publish", "a", "-o", "src", "--force", "--dry-run"}).status, 5);
    EXPECT_FALSE(folder.Exists("full.log"));
}

}  // namespace
}  // namespace ventrix::desk
