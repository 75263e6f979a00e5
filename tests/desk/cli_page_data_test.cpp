// The map and the viewer of a published result.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "desk/command_line.h"

namespace ventrix::desk {
namespace {

using nlohmann::json;
using test::Finished;
using test::RunVentrix;

constexpr char kTopic[] =
    "<topic id=\"t\">\n<title>T</title>\n<body>\n<p id=\"own\" audience=\"expert\">Own</p>\n"
    "<p conref=\"lib.dita#lib/x\"/>\n</body>\n</topic>\n";
constexpr char kLibrary[] =
    "<topic id=\"lib\">\n<title>L</title>\n<body>\n\n<p id=\"x\" "
    "audience=\"novice\">Shared</p></body></topic>\n";
constexpr char kMap[] = "out/build-t.dita/xhtml/ventrix-map.json";
constexpr char kPage[] = "out/build-t.dita/xhtml/t.html";

class PageData : public testing::Test {
  protected:
    Finished Publish(std::vector<std::string> options) {
        options.insert(options.begin(), {"publish", "d/t.dita", "-o", "out", "--attributes", "audience"});
        return RunVentrix(folder, options);
    }

    /// The elements of the map that have the attribute.
    std::vector<json> Mapped() const {
        std::vector<json> found;
        const json map = json::parse(folder.Read(kMap), nullptr, false);
        EXPECT_TRUE(map.is_object());
        for (const json& element : map.is_object() ? map.at("elements") : json::array()) {
            if (element.at("attributes").contains("audience")) {
                found.push_back(element);
            }
        }
        return found;
    }

    void SetUp() override {
        folder.Write("d/t.dita", kTopic);
        folder.Write("d/lib.dita", kLibrary);
    }

    test::TestFolder folder;
};

TEST_F(PageData, TheMapNamesTheSourceAndTheReferenceOfEachElement) {
    for (const std::vector<std::string>& names :
         {std::vector<std::string>{},
          {"--target-attr", "data-t", "--xpath-attr", "data-x", "--source-path-attr", "data-s"}}) {
        std::vector<std::string> options{"--map", "--xpath", "--source-path", "topic", "--force"};
        options.insert(options.end(), names.begin(), names.end());
        const Finished finished = Publish(options);
        EXPECT_EQ(finished.status, 0) << finished.error;
        const Finished checked =
            RunVentrix(folder,
                       {"-c", "PATH=/usr/bin:$PATH; exec python3 \"$@\"", "sh", VENTRIX_JSON_CHECK,
                        VENTRIX_MAP_SCHEMA, "out/build-t.dita/xhtml/ventrix-map.json"},
                       {.program = "/bin/sh"});
        EXPECT_EQ(checked.status, 0) << checked.out << checked.error;
        const std::vector<json> elements = Mapped();
        ASSERT_EQ(elements.size(), 2U) << folder.Read(kPage);
        EXPECT_EQ(elements[0].at("source"), "t.dita");
        EXPECT_EQ(elements[0].at("line"), 4);
        EXPECT_EQ(elements[0].at("xpath"), "/topic/body/p");
        EXPECT_FALSE(elements[0].contains("reusedBy"));
        EXPECT_EQ(elements[1].at("source"), "lib.dita");
        EXPECT_EQ(elements[1].at("line"), 5);
        EXPECT_EQ(elements[1].at("attributes").at("audience"), "novice");
        EXPECT_EQ(elements[1].at("reusedBy"),
                  (json{{"source", "t.dita"}, {"xpath", "/topic/body/p[2]"}, {"line", 5}}));
    }
}

TEST_F(PageData, QueriesAndNamesWithPrefixesAreKept) {
    folder.Write("d/t.dita",
                 "<topic id=\"t\"><title>T</title><body><p>1</p><p audience=\"expert\" xml:lang=\"de\">2</p>"
                 "</body></topic>");
    const Finished finished =
        Publish({"--attributes", "xml:lang", "--preserve-xpath", "//p[@audience]", "--xpath", "--map"});
    EXPECT_EQ(finished.status, 0) << finished.error;
    const std::vector<json> elements = Mapped();
    ASSERT_EQ(elements.size(), 1U) << folder.Read(kPage);
    EXPECT_EQ(elements[0].at("queries"), json{"//p[@audience]"});
    EXPECT_EQ(elements[0].at("xpath"), "/topic/body/p[2]");
    EXPECT_EQ(elements[0].at("source"), "t.dita");
    EXPECT_EQ(elements[0].at("attributes"), (json{{"audience", "expert"}, {"xml:lang", "de"}}));
}

TEST_F(PageData, TheViewerIsAddedToPagesWithAHead) {
    Finished finished = Publish({"--viewer", "--xpath", "--editor-root", "d"});
    EXPECT_EQ(finished.status, 0) << finished.error;
    const std::string page = folder.Read(kPage);
    EXPECT_NE(page.find("<script src=\"ventrix.js\" defer=\"defer\""), std::string::npos) << page;
    EXPECT_NE(page.find("data-editor-root=\"" + folder.Native("d") + "\""), std::string::npos) << page;
    EXPECT_NE(page.find("<script type=\"application/json\" id=\"ventrix-places\">[{"), std::string::npos);
    EXPECT_NE(folder.Read("out/build-t.dita/xhtml/ventrix.css"), "");
    EXPECT_FALSE(folder.Exists(kMap)) << "it was not asked for";

    folder.Write(
        "s.xsl",
        "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\"><xsl:output "
        "omit-xml-declaration=\"yes\"/><xsl:template match=\"/\"><div><xsl:value-of select=\"//p[1]\"/>"
        "</div></xsl:template></xsl:stylesheet>");
    finished = Publish({"--viewer", "--force", "--xslt", "s.xsl"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_NE(finished.error.find("has no head or no body; the viewer was not added"), std::string::npos)
        << finished.error;
    EXPECT_EQ(Publish({"--editor-root", "d"}).status, 2) << "without the viewer it has no effect";
}

TEST_F(PageData, APageThatIsNoXmlIsAFinding) {
    folder.Write(
        "s.xsl",
        "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\"><xsl:output "
        "method=\"text\"/><xsl:template match=\"/\">&lt;p>&lt;b>&lt;/p></xsl:template></xsl:stylesheet>");
    const Finished finished = Publish({"--map", "--xslt", "s.xsl"});
    EXPECT_EQ(finished.status, 1) << finished.error;
    EXPECT_NE(finished.error.find("t.html: is not well-formed XML, so that what it carries cannot be listed"),
              std::string::npos)
        << finished.error;
    const json map = json::parse(folder.Read("out/ventrix-map.json"), nullptr, false);
    EXPECT_EQ(map, (json{{"schema", 1}, {"document", "t.dita"}, {"elements", json::array()}}));
}

}  // namespace
}  // namespace ventrix::desk
