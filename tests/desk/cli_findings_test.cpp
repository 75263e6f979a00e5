#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "desk/cli/finding_columns.h"
#include "desk/cli/findings_format.h"
#include "desk/command_line.h"
#include "desk/xml/xml_handles.h"
#include "support/test_drives.h"

namespace ventrix::desk {
namespace {

using nlohmann::json;
using test::Finished;
using test::RunVentrix;

/// Runs validations of a guide with one fault of each kind.
class Findings : public testing::Test {
  protected:
    Findings() {
        folder.Write("guide.ditamap",
                     "<map><title>Guide</title>\n"
                     "  <topicref href=\"good.dita\"/><topicref href=\"faults.dita\"/>\n"
                     "  <topicref href=\"none.dita\"/><topicref href=\"open.dita\"/>\n"
                     "  <keydef keys=\"known\" href=\"good.dita\"/>\n"
                     "</map>");
        folder.Write("good.dita",
                     "<topic id=\"g\"><title>Good</title><body><p id=\"p\">P <keyword keyref=\"known\"/>"
                     "</p></body></topic>");
        folder.Write("faults.dita",
                     "<topic id=\"f\"><title>Faults</title><body>\n"
                     "  <p>\xc3\xa4\xc3\xb6 <xref href=\"good.dita#g/absent\">link</xref></p>\n"
                     "  <p>The <keyword keyref=\"unknown\"/> pump</p>\n"
                     "  <p conref=\"good.dita#g/gone\"/>\n"
                     "  <p conkeyref=\"lost/p\"/>\n"
                     "  <p><longdescref href=\"good.dita\"/></p>\n"
                     "  <p><xref href=\"good.dita#g/p\">works</xref></p>\n"
                     "</body></topic>");
        folder.Write("open.dita", "<topic id=\"o\"><title>Open</title><body>\n<p>open</body></topic>");
        folder.Write("clean.dita", "<topic id=\"c\"><title>Clean</title></topic>");
    }

    Finished Validate(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "validate");
        return RunVentrix(folder, arguments);
    }

    /// Why the objects, each printed by one run, do not match the schema.
    std::string Check(const std::string& schema, const std::vector<std::string>& objects) {
        std::string lines;
        for (const std::string& object : objects) {
            lines += json::parse(object).dump() + '\n';
        }
        folder.Write("objects", lines);
        return test::SchemaProblem(folder, schema, "objects");
    }

    test::TestFolder folder;
};

TEST_F(Findings, HaveRulesLinesAndColumns) {
    const Finished finished = Validate({"guide.ditamap", "--format", "json"});
    EXPECT_EQ(finished.status, 1);
    const json object = json::parse(finished.out);
    ASSERT_EQ(object["documents"].size(), 1U);
    std::vector<std::string> found;
    for (const json& finding : object["documents"][0]["findings"]) {
        const auto number = [&finding](const char* member) {
            return finding[member].is_null() ? std::string("-") : std::to_string(finding[member].get<int>());
        };
        const auto file = finding["file"].get<std::string>();
        found.push_back(finding["rule"].get<std::string>() + ' ' + file.substr(file.find_last_of('/') + 1) +
                        ' ' + number("line") + ' ' + number("column"));
    }
    EXPECT_EQ(found, (std::vector<std::string>{
                         "missing guide.ditamap 3 19",
                         "not-readable open.dita 2 15",
                         "dead-reference faults.dita 4 6",
                         "unknown-key faults.dita 5 6",
                         "not-handled faults.dita 6 6",
                         "unknown-key faults.dita 3 19",
                         "broken-link faults.dita 2 15",
                     }))
        << object.dump(1);
}

TEST_F(Findings, AreThoseOfAPublish) {
    const std::string published = RunVentrix(folder, {"publish", "guide.ditamap", "-o", "out"}).error;
    const std::string validated = Validate({"guide.ditamap"}).error;
    const struct {
        const char *start, *rule;
    } rows[] = {
        {"faults.dita:2:15: the link \"good.dita#g/absent\" leads to nothing in good.html", "broken-link"},
        {"faults.dita:3:19: keyref=\"unknown\"", "unknown-key"},
        {"faults.dita:4:6: conref=", "dead-reference"},
        {"faults.dita:5:6: conkeyref=\"lost/p\"", "unknown-key"},
        {"faults.dita:6:6: <longdescref>", "not-handled"},
        {"open.dita:2:15: could not be read: Opening and ending tag mismatch", "not-readable"},
    };
    for (const std::string& lines : {published, validated}) {
        for (const auto& row : rows) {
            const std::size_t at = lines.find(row.start);
            ASSERT_NE(at, std::string::npos) << row.start << '\n' << lines;
            EXPECT_TRUE(lines.substr(0, lines.find('\n', at)).ends_with(std::string(" [") + row.rule + ']'))
                << lines;
        }
    }
    EXPECT_FALSE(folder.Exists("xhtml")) << "a validation writes nothing";
    EXPECT_EQ(folder.Count(), 7) << "the sources and the result of the publish with its log";
}

TEST_F(Findings, OfAMissingFileAreOne) {
    folder.Write("t.dita",
                 "<topic id=\"t\"><title>T</title><body><p><xref href=\"none.dita\">a</xref></p>\n"
                 "<p><xref href=\"none.dita#n/x\"/></p><p conref=\"none.dita#n/p\"/>\n"
                 "<pre><coderef href=\"gone.txt\"/></pre><p conref=\"open.dita#o/p\"/>"
                 "<p conkeyref=\"k/p\"/><p><xref href=\"../beside/none.dita\">x</xref></p></body></topic>");
    folder.Write("m.ditamap",
                 "<map><topicref href=\"t.dita\"/><keydef keys=\"k\" href=\"none.dita\"/></map>");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"validate", "m.ditamap"}, {"publish", "m.ditamap", "-o", "out"}}) {
        const std::string lines = RunVentrix(folder, arguments).error;
        EXPECT_EQ(std::ranges::count(lines, '['), 4) << lines;
        EXPECT_NE(lines.find("beside/none.dita, which is missing"), std::string::npos) << lines;
        for (const std::string& line :
             {folder.Native("t.dita") + ":1:52: refers to " + folder.Native("none.dita"),
              folder.Native("t.dita") + ":3:21: refers to " + folder.Native("gone.txt"),
              folder.Native("open.dita") + ":2:15: could not be read"}) {
            EXPECT_NE(lines.find(line), std::string::npos) << line << '\n' << lines;
        }
    }
}

TEST_F(Findings, OfADocumentWithoutAnyTopicNameItOnce) {
    folder.Write("m.ditamap", "<map><topicref href=\"none.dita\"/></map>");
    const std::string error = Validate({"m.ditamap"}).error;
    EXPECT_NE(error.find(folder.Native("m.ditamap") +
                         ": none of its topics could be published; see the warnings ["),
              std::string::npos)
        << error;
}

TEST(FindingColumns, AreThoseOfTheSubject) {
    const test::TestFolder folder;
    folder.Write("t.dita",
                 "<t>\n<a href=\"x\"/><a href='y &amp; z'/>\n<a\n  href=\"x\"\n  id=\"i\"/>\n"
                 "<b keyref=\"k\"/> <a id=\"h\" href=\"#t/e\"/> <longquoteref href=\"q\"/>\n"
                 "<a href=\"1\"/><a href=\"2\"/>\n<b keyref=\"n\"/> <i u=\"e.png\"/></t>");
    const struct {
        int line;
        Subject subject;
        int foundLine, column;
    } rows[] = {
        {2, {.attribute = "href", .value = "x"}, 2, 4},
        {2, {.attribute = "href", .value = "y & z"}, 2, 17},
        {5, {.attribute = "href", .value = "x"}, 4, 3},
        {6, {.attribute = "keyref", .value = "k"}, 6, 4},
        {6, {.attribute = "href", .value = "#t/e"}, 6, 27},
        {6, {.element = "longquoteref"}, 6, 41},
        {7, {.attribute = "href", .value = "t.dita#3"}, 7, 0},
        {9, {.attribute = "href", .value = "x"}, 9, 0},
        {6, {.attribute = "conkeyref", .value = "none"}, 6, 0},
        {8, {.attribute = "href", .value = "given.dita"}, 8, 4},
        {8, {.target = {"/elsewhere/e.png"}}, 8, 23},
        {6, {}, 6, 0},
    };
    for (const auto& row : rows) {
        const std::string what =
            row.subject.element + row.subject.attribute + row.subject.value + row.subject.target.utf8;
        std::vector<Finding> findings{
            {{folder.Native("t.dita")}, row.line, "broken-link", "text", 0, row.subject}};
        AddColumns(findings);
        EXPECT_EQ(findings.front().line, row.foundLine) << what;
        EXPECT_EQ(findings.front().column, row.column) << what;
    }
}

TEST_F(Findings, NameUndeclaredPrefixesOncePerFile) {
    folder.Write("p.xml",
                 "<root>\n<p>a <q:y/> b <q:z/></p><p xml:lang=\"en\" r:a=\"1\"/>\n"
                 "<k:y xmlns:k=\"urn:k\"/></root>");
    folder.Write("dtd.xml", "<!DOCTYPE root SYSTEM \"none.dtd\">\n<root><q:y/></root>");
    const Finished finished = Validate({"p.xml"});
    EXPECT_EQ(finished.status, 1);
    for (const std::string prefix : {"q", "r"}) {
        const std::string line = "p.xml:2: the namespace prefix \"" + prefix + "\" is not declared";
        EXPECT_NE(finished.error.find(line), std::string::npos) << finished.error;
    }
    EXPECT_EQ(std::ranges::count(finished.error, '['), 2) << finished.error;
    EXPECT_EQ(Validate({"dtd.xml"}).error.find("undeclared-prefix"), std::string::npos);
}

TEST_F(Findings, AreListedForPeopleEvenWhenQuiet) {
    const Finished finished = Validate({"guide.ditamap", "--quiet"});
    EXPECT_EQ(finished.status, 1);
    for (const std::string& line :
         {folder.Native("guide.ditamap") + ":3:19: refers to " + folder.Native("none.dita") +
              ", which is missing or unreadable [missing]",
          folder.Native("open.dita") + ":2:15: could not be read: ",
          folder.Native("faults.dita") + ":3:19: keyref=\"unknown\""}) {
        EXPECT_NE(finished.error.find("warning: " + line), std::string::npos) << line << finished.error;
    }
    EXPECT_NE(finished.out.find("not well-formed (1)\n  " + folder.Native("open.dita") + "\n"),
              std::string::npos)
        << finished.out;
    EXPECT_EQ(finished.out.find(folder.Native("open.dita")), finished.out.rfind(folder.Native("open.dita")))
        << "it is not valid too: " << finished.out;

    folder.Write("guide.ditamap",
                 "<map><topicref href=\"faults.dita\"/><topicref href=\"good.dita\"/></map>");
    EXPECT_TRUE(Validate({"guide.ditamap"}).out.ends_with("\na publish would have 6 findings\n"));
    EXPECT_NE(RunVentrix(folder, {"publish", "guide.ditamap", "-o", "out", "-q"}).error, "");
}

TEST_F(Findings, DependOnTheFilterAndTheToolkit) {
    folder.Write("f.ditaval", "<val><prop att=\"audience\" val=\"x\" action=\"exclude\"/></val>");
    folder.Write("t.dita",
                 "<topic id=\"t\"><title>T</title><body><p audience=\"x\" conref=\"good.dita#g/gone\"/>"
                 "</body></topic>");
    EXPECT_EQ(Validate({"t.dita"}).status, 1);
    EXPECT_EQ(Validate({"t.dita", "--ditaval", "f.ditaval"}).status, 0);
    folder.Write(
        "t.dita",
        "<topic id=\"t\"><title>T</title><body><p><longdescref href=\"good.dita\"/></p></body></topic>");
    EXPECT_EQ(Validate({"t.dita"}).status, 1);
    EXPECT_EQ(Validate({"t.dita", "--toolkit", "installed"}).status, 0);
}

TEST_F(Findings, NameMisspelledAttributesOfTheFilter) {
    folder.Write("f.ditaval", "<val><prop att=\"prodcut\" val=\"x\" action=\"exclude\"/></val>");
    folder.Write("t.dita", "<topic id=\"t\"><title product=\"x\">T</title></topic>");
    const Finished finished = Validate({"t.dita", "--ditaval", "f.ditaval"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_NE(finished.error.find("--ditaval: 'prodcut' does not occur in any file of the document; did you "
                                  "mean 'product'?"),
              std::string::npos)
        << finished.error;
}

TEST_F(Findings, JsonAndSarifMatchTheirSchemas) {
    folder.Write("broken.dita", "<topic>\n <p></topic>");
    folder.Write("ventrix.toml",
                 "[[publish]]\nname = \"g\"\ndocument = \"guide.ditamap\"\n"
                 "output = \"o1\"\n[[publish]]\nname = \"c\"\ndocument = \"clean.dita\"\n"
                 "output = \"o2\"\n[[publish]]\nname = \"b\"\ndocument = \"broken.dita\"\n"
                 "output = \"o3\"\n");
    std::map<std::string, std::vector<std::string>> printed;
    for (const std::string format : {"json", "sarif"}) {
        for (const std::string word : {"g", "clean.dita", "broken.dita"}) {
            printed[format].push_back(Validate({word, "--format", format}).out);
        }
        const Finished all = Validate({"--format", format});
        EXPECT_EQ(all.status, 3) << "the worst";
        printed[format].push_back(all.out);
    }
    EXPECT_EQ(Check(VENTRIX_FINDINGS_SCHEMA, printed["json"]), "");
    EXPECT_EQ(Check(VENTRIX_SARIF_STRUCTURE, printed["sarif"]), "");

    const json sarif = json::parse(printed["sarif"].back());
    ASSERT_EQ(sarif["runs"].size(), 3U);
    EXPECT_EQ(sarif["runs"][0]["automationDetails"]["id"], "g");
    EXPECT_EQ(sarif["runs"][1]["results"], json::array());
    const json& broken = sarif["runs"][2]["results"][0];
    EXPECT_EQ(broken["ruleId"], "unreadable-document");
    EXPECT_EQ(broken["level"], "error");
    const json& place = broken["locations"][0]["physicalLocation"];
    EXPECT_EQ(place["artifactLocation"], json({{"uri", "broken.dita"}, {"uriBaseId", "%SRCROOT%"}}));
    EXPECT_EQ(place["region"]["startLine"], 2);

    std::set<std::string> rules;
    for (const json& rule : sarif["runs"][0]["tool"]["driver"]["rules"]) {
        rules.insert(rule["id"]);
    }
    for (const json& result : sarif["runs"][0]["results"]) {
        EXPECT_TRUE(rules.contains(result["ruleId"])) << result;
    }
}

TEST_F(Findings, CodeQualityIsStableAndListsEachFindingOnce) {
    folder.Write("ventrix.toml",
                 "document = \"guide.ditamap\"\n[[publish]]\nname = \"a\"\noutput = \"a\"\n"
                 "[[publish]]\nname = \"b\"\noutput = \"b\"\n");
    const auto fingerprints = [this] {
        std::set<std::string> found;
        const std::string text = Validate({"--format", "codequality"}).out;
        EXPECT_EQ(Check(VENTRIX_CODE_QUALITY_STRUCTURE, {text}), "");
        for (const json& issue : json::parse(text)) {
            EXPECT_TRUE(found.insert(issue["fingerprint"]).second) << issue;
            EXPECT_EQ(issue["description"].get<std::string>().find(folder.Native()), std::string::npos)
                << issue;
        }
        return found;
    };
    const std::set<std::string> before = fingerprints();
    EXPECT_EQ(before.size(), 7U) << "of two deliverables";
    for (const char* file : {"faults.dita", "open.dita"}) {
        folder.Write(file, "\n\n" + folder.Read(file));
    }
    EXPECT_EQ(fingerprints(), before) << "other lines";
    folder.Write("faults.dita",
                 "<topic id=\"f\"><title>Faults</title><body>\n<p conref=\"good.dita#g/gone\"/>\n"
                 "<p conref=\"good.dita#g/gone\"/></body></topic>");
    const std::set<std::string> again = fingerprints();
    EXPECT_EQ(again.size(), 4U) << "two that are equal";
    EXPECT_EQ(std::ranges::count_if(again, [&before](const auto& one) { return before.contains(one); }), 3);

    const json first = json::parse(Validate({"--format", "codequality"}).out)[0];
    EXPECT_EQ(first["check_name"], "missing");
    EXPECT_EQ(first["severity"], "major");
    EXPECT_EQ(first["location"], json({{"path", "guide.ditamap"}, {"lines", {{"begin", 3}}}}));
    EXPECT_EQ(first["description"], "refers to none.dita, which is missing or unreadable");
}

TEST_F(Findings, JunitCountsATestForEachFindingAndEachCleanFile) {
    const Finished finished = Validate({"guide.ditamap", "--format", "junit"});
    const XmlDocument document(xmlReadMemory(finished.out.data(), static_cast<int>(finished.out.size()),
                                             "junit.xml", nullptr, XML_PARSE_NOERROR));
    ASSERT_NE(document, nullptr) << finished.out;
    const xmlNode* suites = xmlDocGetRootElement(document.get());
    const xmlNode* suite = xmlFirstElementChild(const_cast<xmlNode*>(suites));
    ASSERT_NE(suite, nullptr);
    EXPECT_EQ(Attribute(suite, "name"), "guide.ditamap");
    int tests = 0;
    int failures = 0;
    for (const xmlNode* one = xmlFirstElementChild(const_cast<xmlNode*>(suite)); one != nullptr;
         one = one->next) {
        if (one->type == XML_ELEMENT_NODE) {
            ++tests;
            failures += xmlFirstElementChild(const_cast<xmlNode*>(one)) == nullptr ? 0 : 1;
        }
    }
    EXPECT_EQ(failures, 7);
    EXPECT_EQ(Attribute(suite, "failures"), std::to_string(failures));
    EXPECT_EQ(Attribute(suite, "tests"), std::to_string(tests));
    EXPECT_EQ(tests, 8) << "good.dita passes";
    EXPECT_NE(finished.out.find("keyref=&quot;unknown&quot;"), std::string::npos) << finished.out;
}

TEST(FindingsFormat, ExpressesEveryPathAndText) {
    RunReport report;
    report.document = {test::kDriveZ + "/d/a b.dita"};
    report.exitStatus = 1;
    report.warnings = {{{test::kDriveZ + "/d/\xff.dita"}, 2, "toolkit", "text \x01 <&\">", 3},
                       {{}, 0, "log", "lost"}};
    for (const char* format : {"json", "sarif", "codequality"}) {
        const json object = json::parse(FormatFindings(format, {report}), nullptr, false);
        EXPECT_FALSE(object.is_discarded()) << format;
    }
    const json sarif = json::parse(FormatFindings("sarif", {report}));
    const json& results = sarif["runs"][0]["results"];
    EXPECT_EQ(results[1]["locations"][0]["physicalLocation"]["artifactLocation"]["uri"],
              (test::kDriveZ.empty() ? "file://" : "file:///Z:") + std::string("/d/a%20b.dita"))
        << "a finding without a file is about the document";
    const std::string junit = FormatFindings("junit", {report});
    const XmlDocument document(
        xmlReadMemory(junit.data(), static_cast<int>(junit.size()), "j.xml", nullptr, XML_PARSE_NOERROR));
    EXPECT_NE(document, nullptr) << junit;
    EXPECT_NE(junit.find("text \\x01 &lt;&amp;&quot;&gt;"), std::string::npos) << junit;
}

}  // namespace
}  // namespace ventrix::desk
