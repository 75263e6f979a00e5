#include "markers/decoding_walk.h"

#include <ctime>

#include "pass_helpers.h"

namespace ventrix {
namespace {

struct Row {
    const char* name;
    std::string input, output;
};

/// The tags attribute as in the saved file.
std::string Tags(const std::string& tokens) {
    return "data-twtags=\"" + tokens + "\"";
}

TEST(DecodingWalk, AppliesAttributeGroups) {
    const Row rows[] = {
        {"no marker text", "<p class='x'>a &amp; b<br></br></p>", "<p class='x'>a &amp; b<br></br></p>"},
        {"a new tags attribute", "<p class='c'>" + Group("t", "1") + "x</p>",
         "<p class='c' " + Tags("tQL_SEP1QL_SEP") + ">x</p>"},
        {"text in front of the group", "<p>x" + Group("t", "1") + "</p>",
         "<p " + Tags("tQL_SEP1QL_SEP") + ">x</p>"},
        {"a group without text", "<p>" + Group("t", "1") + "</p>", "<p " + Tags("tQL_SEP1QL_SEP") + "></p>"},
        {"only the first of two groups", "<p>" + Group("t", "1") + "x" + Group("u", "2") + "y</p>",
         "<p " + Tags("tQL_SEP1QL_SEP") + ">xy</p>"},
        {"one group per element", "<p>" + Group("t", "1") + "x<b>" + Group("t", "2") + "y</b></p>",
         "<p " + Tags("tQL_SEP1QL_SEP") + ">x<b " + Tags("tQL_SEP2QL_SEP") + ">y</b></p>"},
        {"the first value of a name stays",
         "<p>" + Group("t", "1") + "x<b/>" + Group("t", "2") + "y<b/>" + Group("u", "3") + "z</p>",
         "<p " + Tags("tQL_SEP1QL_SEPuQL_SEP3QL_SEP") + ">x<b/>y<b/>z</p>"},
        {"a name twice in one group", "<p>QL_STARTtQL_EQ1QL_TARGETQL_SEPtQL_EQ2QL_TARGETQL_SEPQL_ENDx</p>",
         "<p " + Tags("tQL_SEP1QL_SEPtQL_SEP2QL_SEP") + ">x</p>"},
        {"a name that occurs first as a value is added again",
         "<p>" + Group("u", "t") + "x<b/>" + Group("t", "1") + "y</p>",
         "<p " + Tags("uQL_SEPtQL_SEPtQL_SEP1QL_SEP") + ">x<b/>y</p>"},
        {"a target", "<p class='c'>" + Group("t", "1", "class") + "x</p>", "<p class='c 1'>x</p>"},
        {"a target takes the value of every text node",
         "<p>" + Group("t", "1", "n") + "x<b/>" + Group("t", "1", "n") + "y</p>", "<p n=\"1 1\">x<b/>y</p>"},
        {"a target whose attribute is empty", "<p n=''>" + Group("t", "1", "n") + "x</p>", "<p n=' 1'>x</p>"},
        {"a value that XML must escape", "<p>" + Group("t", "&lt;\"&amp;'") + "x</p>",
         "<p " + Tags("tQL_SEP&lt;&quot;&amp;'QL_SEP") + ">x</p>"},
        {"an unclosed group loses its words", "<p>QL_STARTtQL_EQ1QL_TARGETQL_SEPx</p>", "<p>t1x</p>"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Decoded(row.input), row.output) << row.name;
}

TEST(DecodingWalk, KnowsTheNamesOfAnElementWhateverAddedThem) {
    const Row rows[] = {
        {"an inner element between",
         "<p>" + Group("t", "1") + "x<b>" + Group("t", "2") + "</b>" + Group("u", "3") + "<b>" +
             Group("t", "4") + "y</b>" + Group("u", "5") + Group("t", "6") + "</p>",
         "<p " + Tags("tQL_SEP1QL_SEPuQL_SEP3QL_SEP") + ">x<b " + Tags("tQL_SEP2QL_SEP") + "></b><b " +
             Tags("tQL_SEP4QL_SEP") + ">y</b></p>"},
        {"a value without a last separator joins the first name",
         "<p data-twtags='aQL_SEP1QL_SEPQL_'>" + Group("SEPt", "2") + "<b/>" + Group("t", "3") + "<b/>" +
             Group("u", "4") + "<b/>" + Group("u", "5") + "</p>",
         "<p data-twtags='aQL_SEP1QL_SEPQL_SEPtQL_SEP2QL_SEPtQL_SEP3QL_SEPuQL_SEP4QL_SEPuQL_SEP5QL_SEP'>"
         "<b/><b/><b/></p>"},
        {"a target of the same attribute",
         "<p>" + Group("t", "1") + "<b/>" + Group("u", "2") + "<b/>" + Group("v", "w", "data-twtags") +
             "<b/>" + Group("w", "3") + "<b/>" + Group("u", "4") + "</p>",
         "<p " + Tags("tQL_SEP1QL_SEPuQL_SEP2QL_SEP wwQL_SEP3QL_SEP") + "><b/><b/><b/><b/></p>"},
        {"a scoped group of the same attribute",
         "<p>" + Group("t", "1") + "<b/>" + Group("t", "2") + "QL_SA_SpQL_SEPdata-twtagsQL_SEPxQL_SA_E<b/>" +
             Group("u", "3") + "</p>",
         "<p " + Tags("tQL_SEP1QL_SEPuQL_SEP3QL_SEP") + "><b/><b/></p>"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Decoded(row.input), row.output) << row.name;
}

/// The processor time in seconds that decoding `count` text nodes of one element takes. `group` makes the
/// group of each.
template <class MakeGroup>
double SecondsToDecode(int count, MakeGroup group) {
    std::string input = "<p>";
    for (int i = 0; i < count; ++i) {
        input += group(std::to_string(i)) + "x<b/>";
    }
    const std::clock_t start = std::clock();
    Decoded(input + "</p>");
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

TEST(DecodingWalk, ManyGroupsInOneElementTakeLinearTime) {
    EXPECT_LT(SecondsToDecode(10000, [](const std::string& i) { return Group("name" + i, "value"); }), 6);
    EXPECT_LT(SecondsToDecode(100000, [](const std::string& i) { return Group("t", "value" + i, "class"); }),
              12);
}

TEST(DecodingWalk, WritesTheTagsAttributeThatTheRequestNames) {
    PublishParams params;
    params.targetAttr = "data-own";
    EXPECT_EQ(Decoded("<p data-twtags='a'>" + Group("t", "1") + "x</p>", params),
              "<p data-twtags='a' data-own=\"tQL_SEP1QL_SEP\">x</p>");
}

TEST(DecodingWalk, AppliesScopedGroupsToTheNearestElementOfTheirName) {
    const auto scoped = [](const std::string& element, const std::string& value) {
        return "QL_SA_S" + element + "QL_SEPidQL_SEP" + value + "QL_SA_E";
    };
    const Row rows[] = {
        {"the enclosing element", "<p>" + scoped("p", "1") + "x</p>", "<p id=\"1\">x</p>"},
        {"the nearest of two", "<div><div><p>" + scoped("div", "1") + "x</p></div></div>",
         "<div><div id=\"1\"><p>x</p></div></div>"},
        {"an existing value stays and uses the entry up",
         "<div><div id='0'><p>" + scoped("div", "1") + "x</p></div></div>",
         "<div><div id='0'><p>x</p></div></div>"},
        {"no such element", "<p>" + scoped("table", "1") + "x</p>", "<p>x</p>"},
        {"several", "<div><p>" + scoped("div", "1") + scoped("p", "2") + "x</p></div>",
         "<div id=\"1\"><p id=\"2\">x</p></div>"},
        {"after the attribute group", "<p>" + Group("t", "1", "n") + scoped("p", "2") + "x</p>",
         "<p n=\"1\" id=\"2\">x</p>"},
        {"after text", "<p>x" + scoped("p", "1") + "y</p>", "<p>xpid1y</p>"},
        {"two entries for one element", "<p>" + scoped("p", "1") + scoped("p", "2") + "x</p>",
         "<p id=\"1\">x</p>"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Decoded(row.input), row.output) << row.name;
}

TEST(DecodingWalk, TurnsElementGroupsIntoElements) {
    const auto element = [](const std::string& xml) { return "QL_ELEM_S" + xml + "QL_ELEM_E"; };
    const std::string i =
        element("&amp;lt;i a=&amp;quot;1&amp;quot;&amp;gt;y &amp;amp;amp; z&amp;lt;/i&amp;gt;");
    const Row rows[] = {
        {"a group without text", "<p>" + i + "</p>", "<p><i a=\"1\">y &amp; z</i></p>"},
        {"groups between text and elements", "<p>u" + i + "v<b/>" + i + i + "w</p>",
         "<p>u<i a=\"1\">y &amp; z</i>v<b/><i a=\"1\">y &amp; z</i><i a=\"1\">y &amp; z</i>w</p>"},
        {"XML that does not parse is dropped", "<p>u" + element("&amp;lt;i&amp;gt;") + "v</p>", "<p>uv</p>"},
        {"nested groups are dropped", "<p>u" + element("x" + element("y")) + "v</p>", "<p>uv</p>"},
        {"an unbalanced group stays text", "<p>uQL_ELEM_S&amp;lt;i/&amp;gt;v</p>",
         "<p>u&amp;lt;i/&amp;gt;v</p>"},
        {"an undeclared prefix is accepted", "<p>" + element("&amp;lt;q:i r:a='1'/&amp;gt;") + "</p>",
         "<p><q:i r:a='1'/></p>"},
        {"entities that the XML itself declares are expanded",
         "<p>" +
             element("&amp;lt;!DOCTYPE i [&amp;lt;!ENTITY e 'E&amp;lt;b/&amp;gt;&amp;amp;f;'&amp;gt;"
                     "&amp;lt;!ENTITY f '&amp;amp;#38;lt;'&amp;gt;]&amp;gt;"
                     "&amp;lt;i a='&amp;amp;f;'&amp;gt;x&amp;amp;e;&amp;lt;/i&amp;gt;") +
             "</p>",
         "<p><i a='&lt;'>xE<b/>&lt;</i></p>"},
        {"an attribute group inside carried XML belongs to the text",
         "<p>u" + element("&amp;lt;i&amp;gt;" + Group("t", "1") + "&amp;lt;/i&amp;gt;") + "</p>",
         "<p " + Tags("tQL_SEP1QL_SEP") + ">u<i></i></p>"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Decoded(row.input), row.output) << row.name;
}

TEST(DecodingWalk, WritesWhatRemainsOfAMarkedTextLikeNewText) {
    const std::string group = Group("t", "1");
    const auto p = [](const std::string& text) {
        return "<p " + Tags("tQL_SEP1QL_SEP") + ">" + text + "</p>";
    };
    const Row rows[] = {
        {"references", "<p>" + group + "a &amp; &lt;b</p>", p("a &amp; &lt;b")},
        {"a bare character", "<p>" + group + "a > b</p>", p("a &gt; b")},
        {"references that are not needed", "<p>" + group + "&quot;<b/>" + group + "&apos;</p>", p("\"<b/>'")},
        {"a character as reference", "<p>" + group + "&#233;</p>", p("\xC3\xA9")},
        {"a word with a letter as reference", "<p>" + group + "x&#81;L_SEPy</p>", p("xy")},
        {"a letter as reference that is no word", "<p>" + group + "x&#81;L</p>", p("xQL")},
        {"the letter of the words", "<p>" + group + "FAQ<b/>QL_SE" + group + "P</p>", p("FAQ<b/>")},
        {"a file with the same line ends", "<div>\r\n<p>" + group + "a\r\nb</p></div>",
         "<div>\r\n" + p("a\r\nb") + "</div>"},
        {"a line feed among other line ends", "<div>\r\n<p>" + group + "a\nb</p></div>",
         "<div>\r\n" + p("a\r\nb") + "</div>"},
        {"other line ends among line feeds", "<div>\n<p>" + group + "a\r\nb</p></div>",
         "<div>\n" + p("a\nb") + "</div>"},
        {"a carriage return alone", "<div>\r\n<p>" + group + "a\rb</p></div>",
         "<div>\r\n" + p("a\r\nb") + "</div>"},
        {"a group between the two bytes of a line end", "<p>" + group + "a\r" + group + "\nb</p>",
         p("a\n\nb")},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Decoded(row.input), row.output) << row.name;
}

TEST(DecodingWalk, RemovesMarkerWordsFromEveryTextNode) {
    PublishParams params;
    params.skipElements = {"mathml"};
    EXPECT_EQ(Decoded("<p a='QL_SEP'><!--QL_SEP--><mathml>xQL_SEPy<b>QL_EQz</b></mathml>\n</p>", params),
              "<p a='QL_SEP'><!--QL_SEP--><mathml>xy<b>z</b></mathml>\n</p>");
}

TEST(BothWalks, RestoreWhatWasEncoded) {
    PublishParams params;
    params.attributes = {"t"};
    params.elements = {"i"};
    params.scopedAttributes = {"s", "w", "table", "class"};
    params.xpathAttr = "place";
    params.addXpath = true;
    const std::string source =
        "<table><s w='wide'>"
        "<p t='&lt;ä\"'>x <i k='1'>&amp;<b>y</b><!--c--></i> z &lt; \xF0\x9F\x9A\xB0</p> "
        "<p>v</p></s></table>";
    const std::string published = Decoded(Encoded(source, params), params);
    EXPECT_EQ(published,
              "<table class=\"wide\"><s w='wide'>"
              "<p t='&lt;ä\"' data-twtags=\"tQL_SEP&lt;ä&quot;QL_SEP\" place=\"/table/s/p\">"
              "x <i k='1'>&amp;<b>y</b><!--c--></i> z &lt; \xF0\x9F\x9A\xB0</p> "
              "<p place=\"/table/s/p[2]\">v</p></s></table>");
}

}  // namespace
}  // namespace ventrix
