#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "desk/command_line.h"
#include "support/scripts.h"

namespace ventrix::desk {
namespace {

using nlohmann::json;
using test::Finished;
using test::RunSettings;
using test::RunVentrix;

/// Six text nodes, of which five have the attribute; an element that has it and no text; a preserved element.
constexpr char kDocument[] =
    "<root>\n"
    "<h>Head</h>\n"
    "<p audience=\"expert\">One</p>\n"
    "<p audience=\"expert\">Two <b>bold</b> tail</p>\n"
    "<p audience=\"novice\">Three</p>\n"
    "<q audience=\"expert\">Four</q>\n"
    "<img audience=\"expert\"/>\n"
    "</root>\n";

/// Makes a paragraph of each block. The templates come after it, and so override its own.
std::string Stylesheet(const std::string& templates) {
    return "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\" "
           "xmlns:ext=\"http://exslt.org/common\" extension-element-prefixes=\"ext\">"
           "<xsl:output method=\"xml\"/><xsl:template match=\"/root\"><html><head><title>t</title></head>"
           "<body><xsl:apply-templates/></body></html></xsl:template>"
           "<xsl:template match=\"h|p|q\"><p id=\"{name()}{position()}\"><xsl:apply-templates/></p>"
           "</xsl:template>" +
           templates + "</xsl:stylesheet>";
}

class LossReportOfPublish : public testing::Test {
  protected:
    /// The report of publishing the document with these templates.
    json Publish(const std::string& templates, std::vector<std::string> options = {}) {
        folder.Write("page.xsl", Stylesheet(templates));
        options.insert(options.end(), {"--xslt", "page.xsl"});
        return Run(std::move(options));
    }

    json Run(std::vector<std::string> options) {
        options.insert(options.begin(), {"publish", "d/doc.xml", "-o", "out", "--report", "report.json"});
        finished = RunVentrix(folder, options);
        const json report = json::parse(folder.Read("report.json"), nullptr, false);
        EXPECT_TRUE(report.is_object()) << finished.out << finished.error;
        reports += report.dump() + '\n';
        return report;
    }

    void SetUp() override { folder.Write("d/doc.xml", kDocument); }

    void TearDown() override {
        if (reports.empty()) {
            return;
        }
        folder.Write("reports", reports);
        EXPECT_EQ(test::SchemaProblem(folder, VENTRIX_REPORT_SCHEMA, "reports"), "");
    }

    test::TestFolder folder;
    Finished finished;    ///< The last run.
    std::string reports;  ///< All, one on a line.
};

/// The places and the arrivals of the items, as "audience 5/6".
std::string Counts(const json& report) {
    std::string counts;
    for (const json& item : report.at("items")) {
        if (item.at("places") > 0) {
            counts += (item.at("name").is_null() ? "xpath" : item.at("name").get<std::string>()) + ' ' +
                      item.at("arrived").dump() + '/' + item.at("places").dump() + ' ';
        }
    }
    return counts;
}

/// A lost place in one line, without the file: "audience=expert 3 /root/p One: absent".
std::string Line(const json& lost) {
    const json& place = lost.at("places").at(0);
    std::string line = lost.at("name").is_null() ? "xpath" : lost.at("name").get<std::string>();
    line += lost.at("value").is_null() ? "" : '=' + lost.at("value").get<std::string>();
    line += ' ' + place.at("line").dump() + ' ' + place.at("xpath").get<std::string>() + ' ' +
            place.at("text").get<std::string>() + ": " + lost.at("reason").get<std::string>();
    const bool isExact = lost.at("candidates") == 1;
    return isExact ? line : line + ' ' + lost.at("count").dump() + " of " + lost.at("candidates").dump();
}

/// The lost places without the element that has no text.
std::vector<std::string> Lost(const json& report) {
    std::vector<std::string> lines;
    for (const json& lost : report.at("lostPlaces")) {
        if (const std::string line = Line(lost); line != "audience=expert 7 /root/img : no-text") {
            lines.push_back(line);
        }
    }
    return lines;
}

const std::vector<std::string> kAll{"--attributes", "audience", "--elements", "b", "--xpath"};

TEST_F(LossReportOfPublish, FollowsEachPlaceThroughTheTransformation) {
    const struct {
        const char* what;
        const char* templates;
        const char* counts;
        std::vector<std::string> lost;
        std::size_t copied, repeated, changed;
    } rows[] = {
        {"keeps all", "", "audience 5/6 b 1/1 xpath 6/6 ", {}, 0, 0, 0},
        {"drops an element",
         "<xsl:template match='q'/>",
         "audience 4/6 b 1/1 xpath 5/6 ",
         {"audience=expert 6 /root/q Four: absent", "xpath=/root/q 6 /root/q Four: absent"},
         0,
         0,
         0},
        {"cuts a string in its marker text",
         "<xsl:template match='p[3]/text()'><xsl:value-of select='substring(., 1, 40)'/></xsl:template>",
         "audience 4/6 b 1/1 xpath 5/6 ",
         {"audience=novice 5 /root/p[3] Three: absent", "xpath=/root/p[3] 5 /root/p[3] Three: absent"},
         0,
         0,
         1},
        {"cuts the words only",
         "<xsl:template match='p[3]/text()'><xsl:value-of select='concat(substring-before(., \"ree\"), "
         "\"!\")'/>"
         "</xsl:template>",
         "audience 5/6 b 1/1 xpath 6/6 ",
         {},
         0,
         0,
         0},
        {"sorts",
         "<xsl:template match='root'><html><head><title>t</title></head><body><xsl:apply-templates "
         "select='*'>"
         "<xsl:sort select='substring-after(., \"QL_END\")' "
         "order='descending'/></xsl:apply-templates></body></html>"
         "</xsl:template>",
         "audience 5/6 b 1/1 xpath 6/6 ",
         {},
         0,
         0,
         0},
        {"copies twice",
         "<xsl:template "
         "match='p[2]'><p><xsl:apply-templates/></p><div><xsl:apply-templates/></div></xsl:template>",
         "audience 5/6 b 1/1 xpath 6/6 ",
         {},
         0,
         3,
         0},
        {"changes to upper case",
         "<xsl:template match='p[1]/text()'><xsl:value-of select=\"translate(., "
         "'abcdefghijklmnopqrstuvwxyz', "
         "'ABCDEFGHIJKLMNOPQRSTUVWXYZ')\"/></xsl:template>",
         "audience 4/6 b 1/1 xpath 5/6 ",
         {"audience=expert 3 /root/p One: changed", "xpath=/root/p 3 /root/p One: changed"},
         0,
         0,
         1},
        {"changes to lower case",
         "<xsl:template match='p[2]/text()[1]'><xsl:value-of select=\"translate(., "
         "'ABCDEFGHIJKLMNOPQRSTUVWXYZ', "
         "'abcdefghijklmnopqrstuvwxyz')\"/></xsl:template>",
         "audience 3/6 b 0/1 xpath 4/6 ",
         {"audience=expert 4 /root/p[2] Two: changed", "audience=expert 4 /root/p[2] tail: changed",
          "b=<b>bold</b> 4 /root/p[2]/b bold: changed", "xpath=/root/p[2] 4 /root/p[2] Two: changed",
          "xpath=/root/p[2] 4 /root/p[2] tail: changed"},
         0,
         0,
         3},
        {"writes only an attribute",
         "<xsl:template match='p[1]'><p title='{.}'/></xsl:template>",
         "audience 4/6 b 1/1 xpath 5/6 ",
         {"audience=expert 3 /root/p One: only-copied", "xpath=/root/p 3 /root/p One: only-copied"},
         1,
         0,
         0},
        {"copies into an attribute, a comment and a script file",
         "<xsl:template match='p[1]'><p title='{.}'><xsl:apply-templates/><xsl:comment><xsl:value-of "
         "select='.'/>"
         "</xsl:comment><ext:document href='data.js' method='text'><xsl:value-of "
         "select='.'/></ext:document></p>"
         "</xsl:template>",
         "audience 5/6 b 1/1 xpath 6/6 ",
         {},
         3,
         0,
         0},
        {"copies into a script element",
         "<xsl:template match='p[1]'><p><xsl:apply-templates/></p><script><xsl:value-of select='.'/></script>"
         "</xsl:template>",
         "audience 5/6 b 1/1 xpath 6/6 ",
         {},
         1,
         0,
         0},
        {"joins texts",
         "<xsl:template match='p[1]'><p><xsl:value-of select='.'/><xsl:value-of select='../p[3]'/></p>"
         "</xsl:template><xsl:template match='p[3]'/>",
         "audience 4/6 b 1/1 xpath 5/6 ",
         {"audience=novice 5 /root/p[3] Three: joined", "xpath=/root/p[3] 5 /root/p[3] Three: joined"},
         0,
         0,
         0},
        {"writes a page that is not XML",
         "<xsl:template match='h'><xsl:text disable-output-escaping='yes'>&lt;br></xsl:text></xsl:template>"
         "<xsl:template match='p|q'/><xsl:template match='p[1]'><p><xsl:apply-templates/></p></xsl:template>",
         "audience 0/6 b 0/1 xpath 0/6 ",
         {"audience=expert 3 /root/p One: not-decoded", "audience=expert 4 /root/p[2] Two: absent",
          "audience=expert 4 /root/p[2] tail: absent", "audience=novice 5 /root/p[3] Three: absent",
          "audience=expert 6 /root/q Four: absent", "b=<b>bold</b> 4 /root/p[2]/b bold: absent",
          "xpath=/root/h 2 /root/h Head: absent", "xpath=/root/p 3 /root/p One: not-decoded",
          "xpath=/root/p[2] 4 /root/p[2] Two: absent", "xpath=/root/p[2] 4 /root/p[2] tail: absent",
          "xpath=/root/p[3] 5 /root/p[3] Three: absent", "xpath=/root/q 6 /root/q Four: absent"},
         0,
         0,
         0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const json report = Publish(row.templates, kAll);
        EXPECT_EQ(Counts(report), row.counts);
        EXPECT_EQ(Lost(report), row.lost);
        EXPECT_EQ(report.at("copied").size(), row.copied) << report.at("copied");
        EXPECT_EQ(report.at("repeated").size(), row.repeated) << report.at("repeated");
        EXPECT_EQ(report.at("changed").size(), row.changed) << report.at("changed");
    }
}

TEST_F(LossReportOfPublish, AnElementInUpperCaseIsMissingOnItsPageWhichIsReported) {
    const std::string upper =
        "<xsl:template match='p[2]/text()'><xsl:value-of select=\"translate(., 'abcdefghijklmnopqrstuvwxyz', "
        "'ABCDEFGHIJKLMNOPQRSTUVWXYZ')\"/></xsl:template>";
    const json report = Publish(upper, {"--elements", "b"});
    EXPECT_EQ(Lost(report), std::vector<std::string>{"b=<b>bold</b> 4 /root/p[2]/b bold: changed"});
    ASSERT_EQ(report.at("changed").size(), 1);
    EXPECT_EQ(report.at("changed").at(0).at("places"), report.at("lostPlaces").at(0).at("places"));
    EXPECT_EQ(finished.status, 1);
    EXPECT_NE(finished.error.find("warning: " + folder.Native("out/doc.html") +
                                  ":5: lacks a preserved element with its text"),
              std::string::npos)
        << finished.error << folder.Read("out/doc.html");
    Publish(upper, {"--elements", "b", "--keep-markers"});
    EXPECT_EQ(finished.error.find("lacks"), std::string::npos) << finished.error;
}

TEST_F(LossReportOfPublish, NamesTheCandidatesOfEqualGroups) {
    folder.Write("d/doc.xml",
                 "<root><p a='1'>Same</p><p a='1'>Same</p><p a='1'>Same</p><p a='1'>Other</p></root>");
    EXPECT_EQ(Lost(Publish("<xsl:template match='p[2]'/>", {"--attributes", "a"})),
              std::vector<std::string>{"a=1 1 /root/p Same: absent 1 of 3"});
    // The words tell the last one apart; of the others, none arrived.
    EXPECT_EQ(Lost(Publish("<xsl:template match='p[position() &lt; 4]'/>", {"--attributes", "a"})),
              (std::vector<std::string>{"a=1 1 /root/p Same: absent", "a=1 1 /root/p[2] Same: absent",
                                        "a=1 1 /root/p[3] Same: absent"}));
}

TEST_F(LossReportOfPublish, CountsEachKindOfItem) {
    folder.Write("d/doc.xml",
                 "<root><title>T</title><p k='v' note='n'>Text <i>in</i> it</p><p k='v'><i>alone</i></p>"
                 "<p k='v'>late</p><p k='v'/><s/><s>x</s></root>");
    const json report = Publish(
        "<xsl:template match='title'><h1><xsl:apply-templates/></h1></xsl:template>"
        "<xsl:template match='p[3]'><div>First: <xsl:apply-templates/></div></xsl:template>"
        "<xsl:template match='s'><p><xsl:apply-templates/></p></xsl:template>",
        {"--scoped-attributes", "p,k,p,class,p,note,section,class", "--elements", "i", "--preserve-xpath",
         "//s", "--source-path", "s"});
    EXPECT_EQ(Counts(report), "p,k,p,class 2/4 p,note,section,class 0/1 i 1/2 //s 1/2 s 1/1 title 1/1 ");
    EXPECT_EQ(Lost(report), (std::vector<std::string>{
                                "p,k,p,class=v 1 /root/p[4] : no-text",
                                "p,k,p,class=v 1 /root/p[3] late: misplaced",
                                "p,note,section,class=n 1 /root/p Text: misplaced",
                                "i 1 /root/p[2]/i alone: stands-alone",
                                "//s 1 /root/s : no-text",
                            }));
}

TEST_F(LossReportOfPublish, TextsAroundAnEntityArePlacesAndACdataSectionIsNotEncoded) {
    folder.Write("d/doc.xml",
                 "<!DOCTYPE root [<!ENTITY prod \"Pump\">\n]>\n<root>\n<p>\n  The &prod; runs</p>\n"
                 "<p><![CDATA[raw]]></p>\n<p>&prod; first</p>\n<p\n class='c'>late</p></root>");
    const json report = Publish("<xsl:template match='p[4]'/>", {"--xpath"});
    EXPECT_EQ(Counts(report), "xpath 3/5 ");
    EXPECT_EQ(Lost(report), (std::vector<std::string>{"xpath 6 /root/p[2] raw: not-encoded",
                                                      "xpath=/root/p[4] 9 /root/p[4] late: absent"}));
}

TEST_F(LossReportOfPublish, ASourcePathThatIsNotCarriedHasTheReasonOfItsElement) {
    const struct {
        const char *document, *lost;
    } rows[] = {
        {"<root><s><b>x</b></s></root>", "s 1 /root/s : no-text"},
        {"<root><s/><s><![CDATA[raw]]></s></root>", "s 1 /root/s[2] raw: not-encoded"},
    };
    for (const auto& row : rows) {
        folder.Write("d/doc.xml", row.document);
        EXPECT_EQ(Lost(Publish("", {"--source-path", "s"})), std::vector<std::string>{row.lost})
            << row.document;
    }
}

TEST_F(LossReportOfPublish, TextsThatAreNotEncodedCarryNoAttribute) {
    folder.Write("d/doc.xml",
                 "<root>\n<s audience='expert' product='x'><p>one</p>\n<p><b>two</b></p>\n"
                 "<p product='y'><b>three</b></p></s></root>");
    const json report = Publish("", {"--attributes", "audience,product", "--elements", "b"});
    EXPECT_EQ(Counts(report), "audience 1/3 product 1/3 b 0/2 ");
    EXPECT_EQ(Lost(report), (std::vector<std::string>{"audience=expert 3 /root/s/p[2]/b two: not-encoded",
                                                      "audience=expert 4 /root/s/p[3]/b three: not-encoded",
                                                      "product=x 3 /root/s/p[2]/b two: not-encoded",
                                                      "product=y 4 /root/s/p[3]/b three: not-encoded",
                                                      "b 3 /root/s/p[2]/b two: stands-alone",
                                                      "b 4 /root/s/p[3]/b three: stands-alone"}));
}

TEST_F(LossReportOfPublish, CountsWhatAScriptDoes) {
    test::WriteScript(folder, "script", "drop <q $1 $stem.html\n");
    std::vector<std::string> options = kAll;
    options.insert(options.end(), {"--no-transform", "--post-script", test::ScriptFile("script")});
    EXPECT_EQ(Counts(Run(options)), "audience 4/6 b 1/1 xpath 5/6 ");
    // A pre-script changes the encoded copies, and a stylesheet follows it.
    test::WriteScript(folder, "before", "drop <h> $1 $1\n");
    options = kAll;
    options.insert(options.end(), {"--pre-script", test::ScriptFile("before")});
    EXPECT_EQ(Counts(Publish("", options)), "audience 5/6 b 1/1 xpath 5/6 ");
    test::WriteScript(folder, "nothing", "");
    const json report = Run({"--xpath", "--no-transform", "--pre-script", test::ScriptFile("nothing")});
    EXPECT_EQ(report.at("notCounted"), "the run wrote no pages");
    EXPECT_NE(finished.out.find("preserved: not counted: the run wrote no pages\n"), std::string::npos);
}

TEST_F(LossReportOfPublish, IsAPageThatLinksToTheResult) {
    folder.Write("page.xsl", Stylesheet("<xsl:template match='q'/>"));
    finished = RunVentrix(folder, {"publish", "d/doc.xml", "-o", "out", "--xslt", "page.xsl", "--attributes",
                                   "audience", "--report", "d/report.html"});
    EXPECT_NE(finished.out.find("preserved: 5 of 7 places\nlost:      2 (audience 2); see " +
                                folder.Native("d/report.html") + "\n"),
              std::string::npos)
        << finished.out;
    const std::string page = folder.Read("d/report.html");
    EXPECT_NE(page.find("<a href=\"../out/doc.html\">doc.xml</a></td><td class=\"number\">6</td>"
                        "<td><code>/root<wbr>/q</code></td><td>Four</td>"),
              std::string::npos)
        << page;
}

TEST_F(LossReportOfPublish, ThePageSortsAndFiltersInABrowser) {
    const RunSettings shell{.program = "/bin/sh"};
    if (RunVentrix(folder, {"-c", "command -v chromium"}, shell).status != 0) {
        GTEST_SKIP() << "chromium is not installed";
    }
    folder.Write("page.xsl", Stylesheet("<xsl:template match='q|p[3]'/>"));
    finished = RunVentrix(folder, {"publish", "d/doc.xml", "-o", "out", "--xslt", "page.xsl", "--attributes",
                                   "audience", "--report", "report.html"});
    // Three rows are lost; by value in descending order, "novice" comes before "expert".
    std::string page = folder.Read("report.html");
    const std::string end = "</body>";
    page.insert(page.rfind(end),
                "<script>{ const value = document.querySelectorAll('#lost th button')[1]; value.click(); "
                "value.click();"
                "const words = document.forms[0].elements.words; words.value = 'EXPERT root/q';"
                "words.dispatchEvent(new Event('input', { bubbles: true }));"
                "document.title = Array.from(document.querySelectorAll('#lost tbody tr'), row => "
                "row.cells[1].textContent + (row.hidden ? '-' : '+')).join(' ') + "
                "document.forms[0].querySelector('output').value; }</script>");
    folder.Write("driven.html", page);
    const Finished browser =
        RunVentrix(folder,
                   {"-c",
                    "exec timeout 60 chromium --headless --no-sandbox --disable-gpu --user-data-dir=profile "
                    "--dump-dom driven.html"},
                   shell);
    EXPECT_NE(browser.out.find("<title>novice- expert+ expert-1 of 3 rows</title>"), std::string::npos)
        << browser.status << browser.error << browser.out.substr(0, 400);
}

TEST_F(LossReportOfPublish, RefusesAPathThatTheRunNeeds) {
    const struct {
        const char* path;
        const char* error;
    } rows[] = {
        {"report.txt", "must end in .html or .json"},
        {"none/report.html", "is in a folder that does not exist"},
        {"out/report.html", "is in the output folder, which is replaced"},
        {"page.html", "is the output path of the transformation"},
        {"link.json", "is an input of this run"},
        {"folder.json", "is not a file"},
    };
    folder.Write("page.xsl", Stylesheet(""));
    folder.Write("folder.json/x", "");
    std::filesystem::create_hard_link(folder.Native("d/doc.xml"), folder.Native("link.json"));
    for (const auto& row : rows) {
        finished = RunVentrix(folder, {"publish", "d/doc.xml", "-o", "out", "--xslt", "page.xsl",
                                       "--out-file", "page.html", "--report", row.path});
        EXPECT_EQ(finished.status, 2) << row.path;
        EXPECT_NE(finished.error.find("--report: " + folder.Native(row.path) + ' ' + row.error),
                  std::string::npos)
            << finished.error;
        EXPECT_FALSE(folder.Exists("out"));
    }
    EXPECT_EQ(folder.Read("d/doc.xml"), kDocument);
}

}  // namespace
}  // namespace ventrix::desk
