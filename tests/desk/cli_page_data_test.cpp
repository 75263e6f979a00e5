// The map and the viewer of a published result.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "desk/command_line.h"
#include "desk/pages/page_map.h"

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
        EXPECT_EQ(test::SchemaProblem(folder, VENTRIX_MAP_SCHEMA, "out/build-t.dita/xhtml/ventrix-map.json"),
                  "");
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

/// "SOURCE:LINE XPATH < LINE OF THE REFERENCE" of each element but the topic's title, "?" for what is
/// missing.
std::vector<std::string> Places(const std::string& text) {
    std::vector<std::string> places;
    const json map = json::parse(text, nullptr, false);
    for (const json& element : map.is_object() ? map.at("elements") : json::array()) {
        const std::string xpath = element.value("xpath", "?");
        if (element.at("page") != "t.html" || xpath == "/topic/title") {
            continue;
        }
        const int line = element.value("line", 0);
        std::string place =
            element.value("source", "?") + ':' + (line == 0 ? "?" : std::to_string(line)) + ' ' + xpath;
        if (element.contains("reusedBy")) {
            EXPECT_EQ(element.at("reusedBy").at("source"), "t.dita");
            place += " < " + std::to_string(element.at("reusedBy").value("line", 0));
        }
        places.push_back(place);
    }
    return places;
}

TEST_F(PageData, ReusedContentIsToldFromTheTopicsOwn) {
    folder.Write("d/lib.dita",
                 "<topic id=\"lib\"><title>L</title><body>\n<p id=\"x\">Shared</p>\n"
                 "<p id=\"y\" audience=\"novice\">Second</p>\n"
                 "<ul><li id=\"a\">One</li><li>Two</li>\n<li id=\"b\">Three</li><li>Four</li></ul>\n"
                 "<section id=\"s\"><title>Section</title>\n<p conref=\"#lib/x\"/></section></body></topic>");
    folder.Write(
        "d/g.ditamap",
        "<map><title>G</title><keydef keys=\"lib\" href=\"lib.dita\"/><keydef keys=\"enter\"><topicmeta>"
        "<keywords><keyword>Enter</keyword></keywords></topicmeta></keydef><topicref href=\"t.dita\"/>"
        "</map>");
    folder.Write("d/f.ditaval", "<val><prop att=\"audience\" val=\"hidden\" action=\"exclude\"/></val>");
    const struct {
        const char* name;
        std::string body;  // Starts on line 2.
        std::vector<std::string> expected;
    } cases[] = {
        {"two references to one target",
         "<p conref='lib.dita#lib/x'/>\n<p>Own</p>\n<p conref='lib.dita#lib/x'/>",
         {"lib.dita:2 /topic/body/p < 2", "t.dita:3 /topic/body/p[2]", "lib.dita:2 /topic/body/p < 4"}},
        {"one of two references is left out",
         "<p conref='lib.dita#lib/x' audience='hidden'/>\n<p conref='lib.dita#lib/x'/>",
         {"lib.dita:2 /topic/body/p"}},
        {"the same XPath, other words",
         "<p>Press <keyword keyref='enter'/> to go on</p>\n<p conref='lib.dita#lib/x'/>\n"
         "<p conref='lib.dita#lib/y'/>\n<p conref='lib.dita#lib/x'/>",
         {"t.dita:2 /topic/body/p", "?:? /map/keydef[2]/topicmeta/keywords/keyword",
          "lib.dita:2 /topic/body/p < 3", "lib.dita:3 /topic/body/p[2] < 4", "lib.dita:2 /topic/body/p < 5"}},
        {"other words, and one is left out",
         "<p>Own</p>\n<p conref='lib.dita#lib/x'/>\n<p conref='lib.dita#lib/x' audience='hidden'/>",
         {"t.dita:2 /topic/body/p", "lib.dita:2 /topic/body/p"}},
        {"the same XPath and the same words",
         "<p>Shared</p>\n<p conref='lib.dita#lib/x'/>",
         {"t.dita:2 /topic/body/p", "lib.dita:2 /topic/body/p < 3"}},
        {"the same words, and one is left out",
         "<p>Shared</p>\n<p conref='lib.dita#lib/x'/>\n<p conref='lib.dita#lib/x' audience='hidden'/>",
         {"?:? /topic/body/p", "?:? /topic/body/p"}},
        {"a range",
         "<ul>\n<li conref='lib.dita#lib/a' conrefend='lib.dita#lib/b'/>\n<li>Last</li></ul>",
         {"lib.dita:4 /topic/body/ul/li < 3", "lib.dita:4 /topic/body/ul/li[2] < 3",
          "lib.dita:5 /topic/body/ul/li[3] < 3", "t.dita:4 /topic/body/ul/li[2]"}},
        {"keys, known and unknown",
         "<p conkeyref='lib/y'/>\n<p conref='lib.dita#lib/y'/>\n<p conkeyref='none/x'>Kept</p>",
         {"lib.dita:3 /topic/body/p[2] < 2", "lib.dita:3 /topic/body/p[2] < 3", "t.dita:4 /topic/body/p[3]"}},
        {"a reference in reused content, with a title",
         "<section conref='lib.dita#lib/s'/>\n<p>Own</p>",
         {"lib.dita:6 /topic/body/section/title < 2", "lib.dita:2 /topic/body/p < 2",
          "t.dita:3 /topic/body/p"}},
        {"an element of the same topic",
         "<p conref='#t/o'/>\n<p id='o'>Own</p>",
         {"t.dita:3 /topic/body/p[2] < 2", "t.dita:3 /topic/body/p[2]"}},
        {"content that contains itself",
         "<note id='o'><p>In</p><note conref='#t/o'/></note>",
         {"t.dita:2 /topic/body/note/p", "t.dita:2 /topic/body/note/p < 2"}},
        {"a link to another topic",
         "<p>See <xref href='lib.dita'/></p>\n<p>After</p>",
         {"t.dita:2 /topic/body/p", "t.dita:3 /topic/body/p[2]"}},
    };
    for (const auto& row : cases) {
        folder.Write("d/t.dita", "<topic id='t'><title>T</title><body>\n" + row.body + "</body></topic>");
        const Finished finished =
            RunVentrix(folder, {"publish", "d/g.ditamap", "-o", "out", "--force", "--attributes", "audience",
                                "--xpath", "--map", "--ditaval", "d/f.ditaval"});
        EXPECT_EQ(Places(folder.Read("out/build-g.ditamap/xhtml/ventrix-map.json")), row.expected)
            << row.name << '\n'
            << finished.error << folder.Read("out/build-g.ditamap/xhtml/t.html");
    }
}

TEST_F(PageData, ContentThatOtherFilesPushHasNoPlace) {
    folder.Write("d/p.dita",
                 "<topic id='p'><title>P</title><body><p conaction='pushreplace' conref='t.dita#t/own'>"
                 "Own 2</p></body></topic>");
    folder.Write("d/u.dita", "<topic id='u'><title>U</title><body><p conref='t.dita#t/own'/></body></topic>");
    const std::string tags = "<p data-twtags='data-qlxpathQL_SEP/topic/body/pQL_SEP'>";
    const auto linesOf = [&](const char* topic, const std::string& words, bool hasPushes) {
        folder.Write("page.html", "<html><body>" + tags + words + "</p></body></html>");
        SourcePlaces places(
            {{folder.Native("d/lib.dita")},
             {folder.Native("d/p.dita")},
             {folder.Native("d/t.dita")},
             {folder.Native("d/u.dita")}},
            {folder.Native("d/t.dita")}, [] { return KeyTargets(); }, hasPushes);
        CarryingAttributes names;
        names.tagsHaveXPath = true;
        const MappedPage page = MapPage({folder.Native("page.html")}, {folder.Native(topic)}, names, places);
        EXPECT_EQ(page.problem, "");
        return page.elements.empty() ? -1 : page.elements.front().origin.place.line;
    };
    for (const char* topic : {"d/t.dita", "d/u.dita"}) {
        EXPECT_EQ(linesOf(topic, "Own", true), 4) << "the same words";
        EXPECT_EQ(linesOf(topic, "Own 2", true), 0) << "pushed, or reused from there";
        EXPECT_EQ(linesOf(topic, "Own 2", false), 4);
    }
}

TEST_F(PageData, ADocumentOfOneFileIsTheSourceOfAllElements) {
    folder.Write("d/t.dita",
                 "<topic id='t'><title>T</title><body><p audience='expert'>One</p></body></topic>");
    const Finished finished = Publish({"--map"});
    EXPECT_EQ(finished.status, 0) << finished.error;
    EXPECT_EQ(Places(folder.Read(kMap)).back(), "t.dita:? ?");
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
    const Finished finished = Publish({"--map", "--viewer", "--xslt", "s.xsl"});
    EXPECT_EQ(finished.status, 1) << finished.error;
    EXPECT_NE(finished.error.find("t.html:1:11: is not well-formed XML ("), std::string::npos)
        << finished.error;
    EXPECT_NE(finished.error.find("; it is not in the map; it has no viewer; "), std::string::npos);
    EXPECT_EQ(finished.error.find("[page-not-xml]"), finished.error.rfind(" [") + 1)
        << "one finding: " << finished.error;
    const json map = json::parse(folder.Read("out/ventrix-map.json"), nullptr, false);
    EXPECT_EQ(map, (json{{"schema", 1}, {"document", "t.dita"}, {"elements", json::array()}}));
}

}  // namespace
}  // namespace ventrix::desk
