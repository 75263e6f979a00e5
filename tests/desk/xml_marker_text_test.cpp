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

TEST(MarkerText, IsRecognised) {
    EXPECT_FALSE(HoldsMarkerText("audienceQL_SEPexpertQL_SEP"));
    EXPECT_TRUE(HoldsMarkerWord("audienceQL_SEP"));
    EXPECT_TRUE(HoldsMarkerText("xQL_SA_Sy"));
    EXPECT_FALSE(HoldsMarkerWord("QL_ and QL_OTHER"));
}

}  // namespace
}  // namespace ventrix::desk
