#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "desk/command_line.h"
#include "support/environment.h"

namespace ventrix::desk {
namespace {

using nlohmann::json;
using test::Finished;
using test::RunVentrix;

constexpr char kTopic[] =
    "<topic id=\"t\"><title>Title</title><body><p audience=\"expert\">Press.</p></body></topic>";

/// Runs commands with --json in a folder with documents of several kinds.
class JsonOutput : public testing::Test {
  protected:
    JsonOutput() {
        folder.Write("a.dita", kTopic);
        folder.Write("gaps.ditamap",
                     "<map><title>M</title><topicref href=\"a.dita\"/><topicref href=\"open.dita\"/>"
                     "<topicref href=\"none.dita\"/><topicref href=\"x%01.dita\"/></map>");
        folder.Write("open.dita", "<topic id=\"b\"><title>B</title><body><p>open</body></topic>");
        folder.Write("broken.xml", "<broken");
        folder.Write("broken.xsl", "<broken");
        folder.Write("full/mine.txt", "keep");
    }

    json Run(std::vector<std::string> arguments) {
        arguments.push_back("--json");
        const Finished finished = RunVentrix(folder, arguments);
        EXPECT_EQ(std::ranges::count(finished.out, '\n'), 1) << "one object in one line: " << finished.out;
        lines += finished.out;
        json object = json::parse(finished.out, nullptr, false);
        EXPECT_TRUE(object.is_object()) << finished.out;
        EXPECT_EQ(object.value("exitStatus", -1), finished.status);
        return object;
    }

    test::TestFolder folder;
    std::string lines;  ///< What the runs printed.
};

TEST_F(JsonOutput, MatchesItsSchemaOnEveryOutcome) {
    struct Row {
        std::vector<std::string> arguments;
        int status;
        bool error;
    };
    const Row rows[] = {
        {{"publish", "a.dita", "-o", "o1", "--attributes", "audience"}, 0, false},
        {{"publish", "gaps.ditamap", "-o", "o2", "--xpath"}, 1, false},
        {{"validate", "a.dita"}, 0, false},
        {{"validate", "gaps.ditamap", "--unsaved", "stray"}, 1, false},
        {{"publish", "a.dita"}, 2, true},
        {{"publish", "a.dita", "-o", "o3", "--attributes", "a b"}, 2, true},
        {{"frob"}, 2, true},
        {{"validate", "broken.xml"}, 3, true},
        {{"request", "--document", "a.dita", "Foo"}, 4, true},
        {{"request", "--document", "a.dita", "Publish -docId {docId} -useDITAOT -outputFolder x\\"}, 4, true},
        {{"publish", "a.dita", "-o", "full"}, 5, true},
        {{"publish", "a.dita", "-o", "o4", "--xslt", "broken.xsl"}, 6, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments[0] + ' ' + row.arguments.back());
        const json object = Run(row.arguments);
        EXPECT_EQ(object.at("exitStatus"), row.status) << object;
        EXPECT_EQ(object.at("error").is_string(), row.error) << object;
    }
    folder.Write("objects", lines);
    EXPECT_EQ(test::SchemaProblem(folder, VENTRIX_JSON_SCHEMA, "objects"), "");
}

TEST_F(JsonOutput, ValidateListsFilesAndWarnings) {
    const json object = Run({"validate", "gaps.ditamap", "--unsaved", "a.dita"});
    EXPECT_EQ(object["status"], 3);
    EXPECT_EQ(object["valid"], json::array({folder.Native("gaps.ditamap")})) << "open.dita is malformed";
    EXPECT_EQ(object["missing"], json::array({folder.Native("none.dita")}));
    EXPECT_EQ(object["unsaved"], json::array({folder.Native("a.dita")}));
    ASSERT_EQ(object["warnings"].size(), 2U) << object;
    EXPECT_EQ(object["warnings"][0]["code"], "reference-left-out");
    EXPECT_EQ(object["warnings"][0]["file"], folder.Native("gaps.ditamap"));
    EXPECT_EQ(object["warnings"][0]["line"], 1);
    EXPECT_EQ(object["warnings"][1]["code"], "not-readable");
    EXPECT_EQ(object["warnings"][1]["file"], folder.Native("open.dita"));
}

TEST_F(JsonOutput, MalformedDriveIsAFinding) {
    const test::VariableChange drives("VENTRIX_DRIVES", "Z=/;Q");
    const json object = Run({"validate", "a.dita"});
    EXPECT_EQ(object["exitStatus"], 1);
    ASSERT_EQ(object["warnings"].size(), 1U) << object;
    EXPECT_EQ(object["warnings"][0]["code"], "malformed-drive");
}

TEST_F(JsonOutput, PublishNamesResultAndPages) {
    const json object = Run({"publish", "a.dita", "-o", "out", "--log", "my.log"});
    const std::string result = folder.Native("out/build-a.dita/xhtml/");
    EXPECT_EQ(object["status"], 0);
    EXPECT_EQ(object["resultFolder"], result);
    EXPECT_EQ(object["log"], folder.Native("my.log"));
    EXPECT_EQ(object["pages"],
              json::array({{{"page", result + "a.html"}, {"source", folder.Native("a.dita")}}}));
}

TEST_F(JsonOutput, RequestRepeatsTheReply) {
    const json object = Run({"request", "--document", "a.dita", "Foo"});
    EXPECT_EQ(object["status"], -43);
    EXPECT_EQ(object["reply"], json({{"first", ""}, {"second", ""}}));
}

}  // namespace
}  // namespace ventrix::desk
