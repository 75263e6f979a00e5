#include "markers/encoding_walk.h"

#include "pass_helpers.h"

namespace ventrix {
namespace {

const std::string kNbsp = "\xC2\xA0";
const std::string kSourceEntry = "data-qlsourceQL_EQdocs\\guide.xmlQL_TARGETQL_SEP";
const std::string kSourceGroup = "QL_START" + kSourceEntry + "QL_END";

struct Row {
    const char* name;
    std::string input, output;
};

PublishParams Attributes(std::list<std::string> names) {
    PublishParams params;
    params.attributes = std::move(names);
    return params;
}

TEST(EncodingWalk, PutsInheritedAttributesBeforeEveryFilledText) {
    const Row rows[] = {
        {"no wanted attribute", "<a><b>x</b></a>", "<a><b>x</b></a>"},
        {"every text node below the element", "<a t='1'>x<b>y</b>z</a>",
         "<a t='1'>" + Group("t", "1") + "x<b>" + Group("t", "1") + "y</b>" + Group("t", "1") + "z</a>"},
        {"the nearest element wins", "<a t='1'><b t='2'>x</b></a>",
         "<a t='1'><b t='2'>" + Group("t", "2") + "x</b></a>"},
        {"nearest element first, then attribute order", "<a t='1'><b v='3' u='2'>x</b></a>",
         "<a t='1'><b v='3' u='2'>QL_STARTvQL_EQ3QL_TARGETQL_SEPuQL_EQ2QL_TARGETQL_SEPtQL_EQ1QL_TARGETQL_SEP"
         "QL_ENDx</b></a>"},
        {"an empty value overrides too", "<a t='1'><b t=''>x</b></a>",
         "<a t='1'><b t=''>" + Group("t", "") + "x</b></a>"},
        {"whitespace stays", "<a t='1'> <b/>\n\t</a>", "<a t='1'> <b/>\n\t</a>"},
        {"a non-breaking space is not whitespace", "<a t='1'>" + kNbsp + "</a>",
         "<a t='1'>" + Group("t", "1") + kNbsp + "</a>"},
        {"a prefixed name is another name", "<a xmlns:p='u' p:t='1'>x</a>", "<a xmlns:p='u' p:t='1'>x</a>"},
        {"nodes of other kinds stay", "<a t='1'><!--x--><?y z?><![CDATA[w]]></a>",
         "<a t='1'><!--x--><?y z?><![CDATA[w]]></a>"},
        {"values are expanded, then escaped as text", "<a t='&lt;&quot;&#228;'>x &amp; y</a>",
         "<a t='&lt;&quot;&#228;'>" + Group("t", "&lt;\"ä") + "x &amp; y</a>"},
        {"a group of the source is merged",
         "<a t='1'>QL_STARTuQL_EQ2QL_TARGETQL_SEPQL_ENDx<b/>&#81;L_STARTQL_ENDy</a>",
         "<a t='1'>QL_STARTtQL_EQ1QL_TARGETQL_SEPuQL_EQ2QL_TARGETQL_SEPQL_ENDx<b/>" + Group("t", "1") +
             "y</a>"},
        {"a title always gets its source path", "<a><title>x</title></a>",
         "<a><title>" + kSourceGroup + "x</title></a>"},
        {"only text directly in the title", "<title><b>x</b></title>", "<title><b>x</b></title>"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Encoded(row.input, Attributes({"t", "u", "v", "t"})), row.output) << row.name;
}

TEST(EncodingWalk, ReplacesListedElementsInRunningText) {
    const std::string i = "QL_ELEM_S&amp;lt;i&amp;gt;y&amp;lt;/i&amp;gt;QL_ELEM_E";
    const std::string u = "QL_ELEM_S&amp;lt;u/&amp;gt;QL_ELEM_E";
    const Row rows[] = {
        {"after text", "<a>x<i>y</i></a>", "<a>x" + i + "</a>"},
        {"before text", "<a><i>y</i>x</a>", "<a>" + i + "x</a>"},
        {"between whitespace", "<a> <i>y</i> </a>", "<a> <i>y</i> </a>"},
        {"alone", "<a><i>y</i></a>", "<a><i>y</i></a>"},
        {"a chain after text", "<a>x<i>y</i><u/></a>", "<a>x" + i + u + "</a>"},
        {"whitespace ends a chain after text", "<a>x<i>y</i> <u/></a>", "<a>x" + i + " <u/></a>"},
        {"a chain before text", "<a><i>y</i> <u/>x</a>", "<a>" + i + " " + u + "x</a>"},
        {"another element ends a chain before text", "<a><i>y</i><b/>x</a>", "<a><i>y</i><b/>x</a>"},
        {"a comment ends a chain before text", "<a><i>y</i><!---->x</a>", "<a><i>y</i><!---->x</a>"},
        {"a run after another element", "<a><i>y</i><b/><i>y</i> <u/>x</a>",
         "<a><i>y</i><b/>" + i + " " + u + "x</a>"},
        {"a run without text after one with text", "<a><u/> <u/>x<b/><u/> <u/></a>",
         "<a>" + u + " " + u + "x<b/><u/> <u/></a>"},
        {"a run before and one after the text", "<a><u/> <u/>x<u/> <u/></a>",
         "<a>" + u + " " + u + "x" + u + " <u/></a>"},
        {"runs around comments and processing instructions", "<a><u/><!----><u/> <u/>x<?p?><u/> <u/></a>",
         "<a><u/><!---->" + u + " " + u + "x<?p?><u/> <u/></a>"},
        {"a run in a child element", "<a><u/><b><u/></b><c><u/> <u/>x</c></a>",
         "<a><u/><b><u/></b><c>" + u + " " + u + "x</c></a>"},
        {"a run after an element that ends in one", "<a><b><u/></b><u/> <u/>x<b>y<u/> <u/></b><u/> <u/></a>",
         "<a><b><u/></b>" + u + " " + u + "x<b>y" + u + " <u/></b><u/> <u/></a>"},
        {"an entity reference is not text", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;<u/></a>",
         "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;<u/></a>"},
        {"XML with the namespaces that it needs", "<a xmlns='u'>x<u/></a>",
         "<a xmlns='u'>xQL_ELEM_S&amp;lt;u xmlns=&amp;quot;u&amp;quot;/&amp;gt;QL_ELEM_E</a>"},
        {"XML with its entities expanded", "<!DOCTYPE a [<!ENTITY e 'z'>]><a>x<i>&e;</i></a>",
         "<!DOCTYPE a [<!ENTITY e 'z'>]><a>xQL_ELEM_S&amp;lt;i&amp;gt;z&amp;lt;/i&amp;gt;QL_ELEM_E</a>"},
        {"a listed root is entered", "<i>x<u/></i>", "<i>x" + u + "</i>"},
    };
    PublishParams params;
    params.elements = {"i", "u"};
    for (const Row& row : rows)
        EXPECT_EQ(Encoded(row.input, params), row.output) << row.name;
}

TEST(EncodingWalk, NeverEntersListedElements) {
    PublishParams params = Attributes({"t"});
    params.elements = {"i"};
    params.scopedAttributes = {"i", "t", "p", "class"};
    EXPECT_EQ(Encoded("<a t='1'><i t='2'>x<b>y</b></i></a>", params), "<a t='1'><i t='2'>x<b>y</b></i></a>");
    EXPECT_EQ(Encoded("<a><b t='1'>x<i t=\"2\">y</i></b></a>", params),
              "<a><b t='1'>" + Group("t", "1") +
                  "xQL_ELEM_S&amp;lt;i t=&amp;quot;2&amp;quot;&amp;gt;y&amp;lt;/i&amp;gt;QL_ELEM_E</b></a>");
}

TEST(EncodingWalk, PutsScopedAttributesBeforeTheFirstText) {
    const std::string group = "QL_SA_SpQL_SEPclassQL_SEP1QL_SA_E";
    const Row rows[] = {
        {"text directly in the element", "<a><s t='1'>x</s></a>", "<a><s t='1'>" + group + "x</s></a>"},
        {"text in a descendant", "<a><s t='1'> <b/><b><c>x</c></b>y</s></a>",
         "<a><s t='1'> <b/><b><c>" + group + "x</c></b>y</s></a>"},
        {"no text, no group", "<a><s t='1'><b/> </s>x</a>", "<a><s t='1'><b/> </s>x</a>"},
        {"attribute of another element", "<a><b t='1'>x</b></a>", "<a><b t='1'>x</b></a>"},
        {"the root", "<s t='1'>x</s>", "<s t='1'>" + group + "x</s>"},
        {"attribute order before group order", "<s u='2' t='1'>x</s>",
         "<s u='2' t='1'>QL_SA_SdivQL_SEPidQL_SEP2QL_SA_E" + group + "x</s>"},
        {"groups of the inner element first", "<s t='1'><s t='2'>x</s></s>",
         "<s t='1'><s t='2'>QL_SA_SpQL_SEPclassQL_SEP2QL_SA_E" + group + "x</s></s>"},
        {"an attribute group before the scoped group", "<s t='1' v='3'>x</s>",
         "<s t='1' v='3'>" + Group("v", "3") + group + "x</s>"},
    };
    PublishParams params = Attributes({"v"});
    params.scopedAttributes = {"s", "t", "p", "class", "s", "u", "div", "id"};
    for (const Row& row : rows)
        EXPECT_EQ(Encoded(row.input, params), row.output) << row.name;
}

TEST(EncodingWalk, StampsXPathsThatCountSiblingsOfTheSameName) {
    const auto at = [](const std::string& path) { return Group("data-qlxpath", path, "place"); };
    const Row rows[] = {
        {"the root", "<root>x</root>", "<root>" + at("/root") + "x</root>"},
        {"the first sibling has no index", "<a><p>x</p><p>y</p></a>",
         "<a><p>" + at("/a/p") + "x</p><p>" + at("/a/p[2]") + "y</p></a>"},
        {"siblings of other names do not count", "<a><q/>t<!--c--><p>x</p><q><r>y</r></q>z</a>",
         "<a><q/>" + at("/a") + "t<!--c--><p>" + at("/a/p") + "x</p><q><r>" + at("/a/q[2]/r") + "y</r></q>" +
             at("/a") + "z</a>"},
        {"each parent counts its own children", "<a><b><p>x</p></b><b><p>x</p><p>x</p></b></a>",
         "<a><b><p>" + at("/a/b/p") + "x</p></b><b><p>" + at("/a/b[2]/p") + "x</p><p>" + at("/a/b[2]/p[2]") +
             "x</p></b></a>"},
        {"prefixes as written", "<n:a xmlns:n='u'><n:p/><p/><n:p>x</n:p></n:a>",
         "<n:a xmlns:n='u'><n:p/><p/><n:p>" + at("/n:a/n:p[2]") + "x</n:p></n:a>"},
        {"many names", "<a><b/><c/><d/><e/><f/><g/><h/><i/><j/><k/><l>x</l><k>y</k><b>z</b><l/><l>x</l></a>",
         "<a><b/><c/><d/><e/><f/><g/><h/><i/><j/><k/><l>" + at("/a/l") + "x</l><k>" + at("/a/k[2]") +
             "y</k><b>" + at("/a/b[2]") + "z</b><l/><l>" + at("/a/l[3]") + "x</l></a>"},
        {"listed elements that are replaced", "<a><p>x<i/>y<q>z</q></p></a>",
         "<a><p>" + at("/a/p") + "xQL_ELEM_S&amp;lt;i/&amp;gt;QL_ELEM_E" + at("/a/p") + "y<q>" +
             at("/a/p/q") + "z</q></p></a>"},
    };
    PublishParams params;
    params.addXpath = true;
    params.xpathAttr = "place";
    params.elements = {"i"};
    for (const Row& row : rows)
        EXPECT_EQ(Encoded(row.input, params), row.output) << row.name;
}

TEST(EncodingWalk, StampsTheSourceOncePerListedNameInEachFile) {
    PublishParams params;
    params.addSourcePath = {"p", "p", "title"};
    params.addXpath = true;
    const auto stamped = [](const std::string& path, bool source) {
        return "QL_STARTdata-qlxpathQL_EQ" + path + "QL_TARGETQL_SEP" + (source ? kSourceEntry : "") +
               "QL_END";
    };
    const std::string input = "<a><title>t</title><p>x</p><p>y</p><p>z</p><title>u</title></a>";
    const std::string output = "<a><title>" + stamped("/a/title", true) + "t</title><p>" +
                               stamped("/a/p", true) + "x</p><p>" + stamped("/a/p[2]", true) + "y</p><p>" +
                               stamped("/a/p[3]", false) + "z</p><title>" + stamped("/a/title[2]", true) +
                               "u</title></a>";
    EXPECT_EQ(Pass(input, false, params), output);
    EXPECT_EQ(params.addSourcePath, (std::list<std::string>{"p", "p", "title"}));
    EXPECT_EQ(Pass(input, false, params), output) << "the next file starts with all names";
}

TEST(EncodingWalk, StampsSelectedElementsWithTheQuery) {
    const Row rows[] = {
        {"every selected element", "<a><p>x</p><p><b>y</b></p><p/></a>",
         "<a><p>" + Group("data-qlxpath", "//p", "q") + "x</p><p><b>" + Group("data-qlxpath", "//p", "q") +
             "y</b></p><p/></a>"},
        {"merged into the group of the walk", "<a><p t='1'>x</p></a>",
         "<a><p t='1'>QL_STARTdata-qlxpathQL_EQ//pQL_TARGETqQL_SEPtQL_EQ1QL_TARGETQL_SEPQL_ENDx</p></a>"},
        {"before scoped groups", "<a><p s='1'>x</p></a>",
         "<a><p s='1'>" + Group("data-qlxpath", "//p", "q") + "QL_SA_SdQL_SEPeQL_SEP1QL_SA_Ex</p></a>"},
        {"two queries, the later one first", "<a><p id='k'>x</p></a>",
         "<a><p "
         "id='k'>QL_STARTdata-qlxpathQL_EQ/a/*[@id='k']QL_TARGETqQL_SEPdata-qlxpathQL_EQ//pQL_TARGETqQL_SEP"
         "QL_ENDx</p></a>"},
    };
    PublishParams params = Attributes({"t"});
    params.scopedAttributes = {"p", "s", "d", "e"};
    params.preserveXPathAttr = "q";
    // Invalid XPath, unbound prefixes, attributes, text nodes and numbers are skipped silently.
    params.preserveXPathList = {"//[",        "//n:p", "//*[not(@xml:lang)]", "//@*", "//text()",
                                "count(//p)", "",      "//p[@id='xml:']",     "//p",  "/a/*[@id='k']"};
    for (const Row& row : rows)
        EXPECT_EQ(Encoded(row.input, params), row.output) << row.name;
}

TEST(EncodingWalk, SkipsTheElementsOfSkipElements) {
    PublishParams params = Attributes({"t"});
    params.skipElements = {"mathml"};
    params.elements = {"mathml", "i"};
    EXPECT_EQ(Encoded("<a t='1'>x<mathml>y<i>z</i></mathml></a>", params),
              "<a t='1'>" + Group("t", "1") + "x<mathml>y<i>z</i></mathml></a>");
    EXPECT_EQ(Encoded("<mathml t='1'>x</mathml>", params), "<mathml t='1'>x</mathml>");
}

}  // namespace
}  // namespace ventrix
