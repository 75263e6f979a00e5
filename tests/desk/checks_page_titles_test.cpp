#include "desk/checks/page_titles.h"

#include "desk/folder_fixture.h"
#include "support/links.h"

namespace ventrix::desk {
namespace {

using PageTitles = FolderFixture;

TEST_F(PageTitles, LoseTheTagsOfPreservedElementsOnly) {
    const struct {
        const char *page, *plain;
    } rows[] = {
        {"<html><head>\n<title data-t='a>b'>A <ui x='>'>B <b>C</b><i/><!-- c --> &lt; D</ui> "
         "E</title></head>",
         "<html><head>\n<title data-t='a>b'>A B C &lt; D E</title></head>"},
        {"<html><head><title>A <ui/>B</title></head>", "<html><head><title>A B</title></head>"},
        {"<html><head><title>A <b>B</b></title></head>", nullptr},
        {"<html><head/><body><svg><title><ui>A</ui></title></svg></body></html>", nullptr},
        {"<html><head></head><body><svg><title><ui>A</ui></title></svg></body></html>", nullptr},
        {"<html><head><title><ui>A</ui>", nullptr},
    };
    for (const auto& row : rows) {
        std::string page = row.page;
        EXPECT_EQ(MakeTitlePlain(page, {"ui", "q"}), row.plain != nullptr) << row.page;
        EXPECT_EQ(page, row.plain == nullptr ? row.page : row.plain);
    }
}

TEST_F(PageTitles, AreChangedInTheFilesOfAResult) {
    const std::string page = "<html><head><title><ui>A</ui></title></head></html>";
    const NativePath own{Write("own.html", page)};
    test::MakeLink(Write("outside.html", page), Native("link.html"));
    EXPECT_TRUE(MakeTitlesPlain({own, {Native("link.html")}, {Native("none.html")}}, {"ui"}).empty());
    EXPECT_EQ(Read("own.html"), "<html><head><title>A</title></head></html>");
    EXPECT_EQ(Read("outside.html"), page) << "a link leads out of the result";
}

}  // namespace
}  // namespace ventrix::desk
