#include "desk/checks/visible_markers.h"

#include "desk/folder_fixture.h"

namespace ventrix::desk {
namespace {

using VisibleMarkerText = FolderFixture;

TEST_F(VisibleMarkerText, IsFoundInTextsOnly) {
    const struct {
        const char* page;
        const char* excerpt;  ///< Empty if nothing is found.
    } rows[] = {
        {"<p>a QL_EN</p>", "a QL_EN"},
        {"<p>a ql_sepb</p>", "a ql_sepb"},
        {"<p>\n... _sepb</p>", " ... _sepb"},
        {"<p>LEM_Eb</p>", ""},
        {"<p>L_ELEM_Eb</p>", "L_ELEM_Eb"},
        {"<p>the _end</p>", ""},
        {"<p>FULL_END FRONT_END</p>", ""},
        {"<p title='QL_END' data-twtags=\"aQL_SEPb>QL_SEP\">a</p><!-- QL_END --><script>QL_END</script>"
         "<STYLE type='x'>QL_END</STYLE><script src='x'/><styled>b</styled>",
         ""},
        {"<script src='x'/><p>QL_END</p>", "QL_END"},
        {"<script>QL_END", ""},
        {"<p>\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4QL_",
         "...\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4QL_"},
    };
    for (const auto& row : rows) {
        const std::vector<VisibleMarker> found = FindVisibleMarkers({{Write("p.html", row.page)}}, {});
        EXPECT_EQ(found.empty() ? "" : found.front().excerpt, row.excerpt) << row.page;
    }
}

TEST_F(VisibleMarkerText, IsNotWhatTheUserWrote) {
    const NativePath source{Write("s.dita", "<p>MySQL_Server, _ENDPOINT, QL_START of a group</p>")};
    const NativePath wide{Write("w.dita", std::string("\xFF\xFE<\0p\0>\0Q\0L\0_\0E\0q\0", 18))};
    const NativePath binary{Write("b.png", std::string("\0QL_ELEM_S", 10))};
    const OwnText own{.files = {source, wide, binary, {Native("none.dita")}},
                      .texts = {"/home/sql_end_docs/"}};
    const struct {
        const char* text;
        bool isOwn;
    } rows[] = {
        {"MYSQL_SE", true},      {"MySQL_", true},     {"_ENDPOINT", true},   {"sql_end_docs", true},
        {"QL_Eq", true},         {"QL_ELEM_S", false}, {"QL_START of", true}, {"tQL_START of", false},
        {"QL_STARTaudi", false}, {"_ENDPart", false},
    };
    for (const auto& row : rows) {
        const std::string page = "<p>" + std::string(row.text) + "</p>";
        const bool isFound = !FindVisibleMarkers({{Write("p.html", page)}}, own).empty();
        EXPECT_EQ(isFound, !row.isOwn) << row.text;
    }
}

TEST_F(VisibleMarkerText, HasItsPlaceInEachPage) {
    const std::vector<NativePath> pages{
        {Write("a.html", "<p>a</p>")}, {Write("b.html", "<p>\n\xc3\xa4 QL_</p>")}, {Write("c.html", "QL_")}};
    const std::vector<VisibleMarker> found = FindVisibleMarkers(pages, {});
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].page, pages[1]);
    EXPECT_EQ(found[0].line, 2);
    EXPECT_EQ(found[0].column, 3);
    EXPECT_EQ(found[1].page, pages[2]);
}

}  // namespace
}  // namespace ventrix::desk
