// What a package loses of its marker text before the transformation runs.
#include <gtest/gtest.h>

#include "desk/toolkit/left_elements.h"
#include "desk/toolkit/no_prose.h"
#include "desk/xml/marker_text.h"

namespace ventrix::desk {
namespace {

const std::string kMarker = "QL_STARTaQL_EQbQL_TARGETQL_SEPQL_END";

TEST(NoProse, KeysOfDocBookLoseTheirMarkerText) {
    const struct {
        Vocabulary vocabulary;
        std::string before, key, after;  ///< Of the key, only the marker text goes.
    } rows[] = {
        {Vocabulary::kDocBook, "<indexterm><primary>", "a", "</primary></indexterm>"},
        {Vocabulary::kDocBook, "<db:indexterm><db:seealso sortas='x'><db:literal>", "a",
         "</db:literal></db:seealso></db:indexterm>"},
        {Vocabulary::kDocBook, "<!DOCTYPE b [<!ENTITY e 'x'>\n]\n><copyright><year>", "1999",
         "</year></copyright>"},
        {Vocabulary::kDocBook, "<p><citation>", "a", "</citation></p>"},
        {Vocabulary::kDocBookGlossary, "<glossentry><glossterm>", "a", "</glossterm></glossentry>"},
    };
    for (const auto& row : rows) {
        const std::string source = row.before + kMarker + row.key + row.after + "<p>" + kMarker + "p</p>";
        EXPECT_EQ(WithoutMarkersOutsideProse(source, row.vocabulary),
                  row.before + row.key + row.after + "<p>" + kMarker + "p</p>");
        EXPECT_EQ(WithoutMarkersOutsideProse(source, Vocabulary::kOther), source);
    }
    for (const std::string tags : {"<table><primary>", "<p><year>", "<glossentry><glossterm>"}) {
        EXPECT_EQ(WithoutMarkersOutsideProse(tags + kMarker, Vocabulary::kDocBook), tags + kMarker);
    }
}

TEST(NoProse, ElementsOfWhichOnlyTextIsLeftAreNamed) {
    std::string found;
    const std::string start = "<indexterm><primary>" + kMarker + "a ";
    EXPECT_EQ(WithoutMarkersOutsideProse(start + MarkerTextOf("<literal>x</literal>"), Vocabulary::kDocBook,
                                         [&](std::string_view element, std::size_t position) {
                                             found = std::string(element) + " " + std::to_string(position);
                                         }),
              "<indexterm><primary>a x");
    EXPECT_EQ(found, "<literal>x</literal> " + std::to_string(start.size()));
}

TEST(LeftElements, AreThoseThatOnlyTheTransformationCanProcess) {
    const struct {
        Vocabulary vocabulary;
        const char* element;
        const char* why;  ///< Empty if the element is preserved.
    } rows[] = {
        {Vocabulary::kOther, "<keyword keyref='x'/>", "reference"},
        {Vocabulary::kOther, "<b>see <xref linkend='x'></xref></b>", "reference"},
        {Vocabulary::kOther, "<keyword keyref='x'>own</keyword>", "reference"},
        {Vocabulary::kOther, "<a href='x'>own</a>", ""},
        {Vocabulary::kDita, "<xref href='x'>own</xref>", "reference"},
        {Vocabulary::kDocBook, "<option><ulink url='x'>own</ulink></option>", "reference"},
        {Vocabulary::kOther, "<ph id='w'>t</ph>", "reference"},
        {Vocabulary::kOther, "<ph>a<b xml:id='w'>t</b></ph>", "reference"},
        {Vocabulary::kOther, "<ph id='other'>t</ph>", ""},
        {Vocabulary::kOther, "<mark type='x'/>", "without text"},
        {Vocabulary::kOther, "<ph>a<mark></mark></ph>", "without text"},
        {Vocabulary::kOther, "<quote>q</quote>", ""},
        {Vocabulary::kDita, "<fn>note</fn>", "generates"},
        {Vocabulary::kDita, "<ph>a <tm tmtype='tm'>b</tm></ph>", "generates"},
        {Vocabulary::kDita, "<image href='x'><alt>x</alt></image>", "generates"},
        {Vocabulary::kDita, "<quote>q</quote>", ""},
        {Vocabulary::kDita, "<coderef href='x'/>", "without text"},
        {Vocabulary::kDocBook, "<footnote><para>q</para></footnote>", "generates"},
        {Vocabulary::kDocBook, "<d:footnote>q</d:footnote>", "generates"},
        {Vocabulary::kDocBookGlossary, "<quote>q</quote>", "generates"},
        {Vocabulary::kDocBook, "<citetitle>q</citetitle>", ""},
        {Vocabulary::kDocBook, "<citetitle pubwork='article'>q</citetitle>", "generates"},
        {Vocabulary::kDocBook, "<productname>q</productname>", "generates"},
        {Vocabulary::kDocBook, "<fn>q</fn>", ""},
    };
    for (const auto& row : rows) {
        const std::string start = "<p>a ", end = " <xref linkend='w'/></p>",
                          group = MarkerTextOf(row.element);
        const LeavingRules rules{{{"w"}, {}}, row.vocabulary};
        std::string why;
        const std::string document =
            WithLeftElements(start + group + end, rules,
                             [&](std::string_view element, std::size_t position, std::string_view reason) {
                                 EXPECT_EQ(element, row.element);
                                 EXPECT_EQ(position, start.size());
                                 why = reason;
                             });
        EXPECT_EQ(document, start + (*row.why == 0 ? group : row.element) + end);
        EXPECT_EQ(why.empty(), *row.why == 0) << row.element << why;
        EXPECT_NE(why.find(row.why), std::string::npos) << row.element << why;
    }
}

TEST(LeftElements, ProductNamesOfDocBookFiveHaveAClassOnlyIfTheySaySo) {
    const LeavingRules rules{{{}, {}}, Vocabulary::kDocBook};
    const std::string book = "<book xmlns='http://docbook.org/ns/docbook'>";
    const std::string plain = MarkerTextOf("<productname>q</productname>");
    const auto ignore = [](std::string_view, std::size_t, std::string_view) {};
    EXPECT_EQ(WithLeftElements(book + plain, rules, ignore), book + plain);
    const std::string registered = "<productname class='registered'>q</productname>";
    EXPECT_EQ(WithLeftElements(book + MarkerTextOf(registered), rules, ignore), book + registered);
}

TEST(LeftElements, CdataSectionsOfOthersBecomeText) {
    const LeavingRules rules{{{}, {}}, Vocabulary::kDita};
    const auto fail = [](std::string_view element, std::size_t, std::string_view) { FAIL() << element; };
    const auto none = WithLeftElements(
        "<p>" + MarkerTextOf("<ph a=\"b\">x<![CDATA[<fn>&]]>y<![CDATA[']]></ph>") + "</p>", rules, fail);
    EXPECT_EQ(none, "<p>" + MarkerTextOf("<ph a=\"b\">x&lt;fn&gt;&amp;y'</ph>") + "</p>");
}

TEST(LeftElements, AreThoseInARangeThatAReferenceReuses) {
    const LeavingRules rules{{{}, {{"f", "l"}}}, Vocabulary::kDita};
    const auto ignore = [](std::string_view, std::size_t, std::string_view) {};
    const std::string group = MarkerTextOf("<ph>t</ph>");
    EXPECT_EQ(WithLeftElements("<b id='f'/>" + group + "<b id='l'/>" + group, rules, ignore),
              "<b id='f'/><ph>t</ph><b id='l'/>" + group);
    EXPECT_EQ(WithLeftElements("<b id='l'/>" + group + "<b id='f'/>", rules, ignore),
              "<b id='l'/>" + group + "<b id='f'/>");
}

TEST(LeftElements, ReferencesNameIds) {
    const struct {
        std::string document;
        IdSet ids;
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

}  // namespace
}  // namespace ventrix::desk
