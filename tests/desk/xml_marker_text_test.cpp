#include "desk/xml/marker_text.h"

#include <gtest/gtest.h>

namespace ventrix::desk {
namespace {

TEST(MarkerText, WholeGroupsAreTakenOutInAnyEscaping) {
    const struct {
        const char *text, *kept;
        std::size_t groups;
    } rows[] = {
        {"plain QL_SEP", "plain QL_SEP", 0},
        {"a QL_STARTaudienceQL_EQxQL_TARGETQL_SEPQL_ENDb", "a b", 1},
        {"QL_STARTaQL_ENDQL_SA_StableQL_SEPbQL_SEPcQL_SA_Ex", "x", 2},
        {"QL_START a QL_STARTbQL_ENDc", "QL_START a c", 1},
        {"cut QL_STARTaudience", "cut QL_STARTaudience", 0},
        {"cut QL_ELEM_S&lt;b> QL_STARTaQL_ENDx", "cut QL_ELEM_S&lt;b> x", 1},
        {"Press QL_ELEM_S&lt;uicontrol id=&quot;a&quot;&gt;OK &amp;lt; &amp;amp;&lt;/uicontrol&gt;QL_ELEM_E "
         "now",
         "Press OK < & now", 1},
        {"QL_ELEM_S&amp;lt;b&amp;gt;A &amp;quot; &amp;amp;amp; &amp;amp;lt;&amp;lt;/b&amp;gt;QL_ELEM_E",
         "A &quot; &amp; &lt;", 1},
        {"QL_ELEM_S\\u0026lt;b\\u0026gt;A\\u0026lt;/b\\u0026gt;QL_ELEM_E", "A", 1},
        {"q=QL_ELEM_S%26lt%3Bb%26gt%3BA%20B%26lt%3B%2Fb%26gt%3BQL_ELEM_E&x", "q=A%20B&x", 1},
        {"QL_ELEM_S%26lt;b%26gt;A%26lt;/b%26gt;QL_ELEM_E", "A", 1},
        {"QL_ELEM_SplainQL_ELEM_E", "plain", 1},
    };
    for (const auto& row : rows) {
        std::string text = row.text;
        EXPECT_EQ(RemoveMarkerGroups(text), row.groups) << row.text;
        EXPECT_EQ(text, row.kept) << row.text;
    }
}

TEST(MarkerText, ElementsThatReferencesNeedAreRestored) {
    const std::string open = "QL_ELEM_S&amp;lt;", close = "&amp;gt;QL_ELEM_E";
    const struct {
        std::string document, restored;
    } rows[] = {
        {"a " + open + "keyword keyref=&amp;quot;x&amp;quot;/" + close + " b", "a <keyword keyref=\"x\"/> b"},
        {open +
             "b&amp;gt;see &amp;lt;xref "
             "linkend=&amp;quot;x&amp;quot;&amp;gt;&amp;lt;/xref&amp;gt;&amp;lt;/b" +
             close,
         "<b>see <xref linkend=\"x\"></xref></b>"},
        {open + "keyword keyref=&amp;quot;x&amp;quot;&amp;gt;own&amp;lt;/keyword" + close, ""},
        {open + "image href=&amp;quot;x&amp;quot;/" + close, ""},
        {open + "ph id=&amp;quot;w&amp;quot;&amp;gt;t&amp;lt;/ph" + close, "<ph id=\"w\">t</ph>"},
        {open + "ph&amp;gt;a&amp;lt;b xml:id=&amp;quot;w&amp;quot;&amp;gt;t&amp;lt;/b&amp;gt;&amp;lt;/ph" +
             close,
         "<ph>a<b xml:id=\"w\">t</b></ph>"},
        {open + "ph id=&amp;quot;other&amp;quot;&amp;gt;t&amp;lt;/ph" + close, ""},
        {"cut " + open, ""},
        {"<b id='f'/> and " + open + "ph&amp;gt;t&amp;lt;/ph" + close + "<b id='l'/>",
         "<b id='f'/> and <ph>t</ph><b id='l'/>"},
        {"<b id='l'/> and " + open + "ph&amp;gt;t&amp;lt;/ph" + close + "<b id='f'/>", ""},
    };
    for (const auto& row : rows) {
        std::string document = row.document;
        EXPECT_EQ(RestoreReferenceElements(document, {{"w"}, {{"f", "l"}}}), row.restored.empty() ? 0U : 1U)
            << row.document;
        EXPECT_EQ(document, row.restored.empty() ? row.document : row.restored);
    }
}

TEST(MarkerText, ReferencesNameIds) {
    const struct {
        std::string document;
        std::set<std::string, std::less<>> ids;
        std::set<std::pair<std::string, std::string>> ranges = {};
    } rows[] = {
        {R"(<ph conref="lib.dita#lib/w"/><ph conref='#./v' conrefend = "a/b.dita#t/x"/>)",
         {"v", "w", "x"},
         {{"v", "x"}}},
        {R"(<ph conrefend="#./x" conkeyref="k/w"/><ph conref="#./v"/>)", {"v", "w", "x"}, {{"w", "x"}}},
        {"QL_ELEM_S&amp;lt;b conref=&amp;quot;#./v&amp;quot;/&amp;gt;&amp;lt;b "
         "conkeyref=&amp;quot;k/w&amp;quot; "
         "conrefend=&amp;quot;#./x&amp;quot;/&amp;gt;QL_ELEM_E",
         {"v", "w", "x"},
         {{"w", "x"}}},
        {R"(<ph conkeyref="lib/w"/><xref keyref="k/v"/><keyword keyref="product"/>)", {"v", "w"}},
        {"<xref\nhref\n=\n\"#w\"/><xref href='sub/w.dita'/><link xlink:href='#v'/>", {"v", "w"}},
        {"<link linkend='w'/><callout arearefs='n' linkends='v  x'/>", {"v", "w", "x"}},
        {"QL_ELEM_S&amp;lt;ph conref=&amp;quot;#t/w&amp;quot;/&amp;gt;QL_ELEM_E", {"w"}},
        {"<p id='w' data-href='#v'>a = b</p>", {}},
    };
    for (const auto& row : rows) {
        ReferencedIds referenced;
        AddReferencedIds(row.document, referenced);
        EXPECT_EQ(referenced.ids, row.ids) << row.document;
        EXPECT_EQ(referenced.ranges, row.ranges) << row.document;
    }
}

TEST(MarkerText, IsRecognised) {
    EXPECT_FALSE(HoldsMarkerText("audienceQL_SEPexpertQL_SEP"));
    EXPECT_TRUE(HoldsMarkerWord("audienceQL_SEP"));
    EXPECT_TRUE(HoldsMarkerText("xQL_SA_Sy"));
    EXPECT_FALSE(HoldsMarkerWord("QL_ and QL_OTHER"));
}

}  // namespace
}  // namespace ventrix::desk
