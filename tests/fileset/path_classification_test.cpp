#include "fileset/path_classification.h"

#include "support/text_rows.h"

namespace ventrix::test {
namespace {

TEST(PathClassification, RootIsTheDriveOrTheServer) {
    const TextRow rows[] = {
        {R"(C:\)", R"(C:\)"},
        {R"(C:\docs\a.xml)", R"(C:\)"},
        {"C:", "C:"},
        {"C:name.xml", "C:name.xml"},
        {"C", ""},
        {"", ""},
        {R"(\single\a.xml)", ""},
        {R"(rel\a.xml)", ""},
        {R"(\\)", R"(\\)"},
        {R"(\\a)", R"(\\a)"},
        {R"(\\a\)", R"(\\a\)"},
        {R"(\\server\share\a.xml)", R"(\\server\)"},
        {"C:/docs/a.xml", "C:/docs/a.xml"},
    };
    ExpectRows(rows, PathRoot);
}

TEST(PathClassification, ParentFolderIgnoresTrailingBackslashes) {
    const TextRow rows[] = {
        {"", ""},
        {"name.xml", ""},
        {R"(C:\)", ""},
        {R"(C:\a\)", R"(C:\)"},
        {R"(a\b\c.xml)", R"(a\b\)"},
        {R"(a\b\)", R"(a\)"},
        {R"(a\b\\)", R"(a\)"},
        {R"(\)", ""},
        {R"(\\server\share\)", R"(\\server\)"},
        {"C:/a/b.xml", ""},
    };
    ExpectRows(rows, ParentFolder);
}

TEST(PathClassification, FileNameFollowsTheLastBackslash) {
    const TextRow rows[] = {{R"(a\b\)", ""}, {"name.xml", ""}, {"", ""}, {R"(C:\a\n.xml)", "n.xml"}};
    ExpectRows(rows, FileNameOf);
}

TEST(PathClassification, ExtensionBeginsAtTheLastDotOfTheWholePath) {
    const TextRow rows[] = {
        {R"(C:\docs\guide.xml)", R"(C:\docs\guide.html)"},
        {R"(C:\a.b\name)", R"(C:\a.html)"},
        {R"(C:\docs\guide)", R"(C:\docs\guide.html)"},
        {"a.b.c", "a.b.html"},
        {".xml", ".html"},
        {"", ".html"},
    };
    ExpectRows(rows, [](Path path) { return ReplaceExtension(path, ".html"), path; });
}

TEST(PathClassification, TrailingBackslashIsAddedOnce) {
    const TextRow rows[] = {{"", ""}, {"a", R"(a\)"}, {R"(a\)", R"(a\)"}, {"a/", R"(a/\)"}};
    ExpectRows(rows, WithTrailingBackslash);
}

TEST(PathClassification, KindsOfNamesAreRecognisedInLowerCaseOnly) {
    for (const char* name : {"a.xml", ".xml", "a.dita", "a.ditamap", R"(C:\x\a.b.xml)"}) {
        EXPECT_TRUE(IsXmlFile(name)) << name;
    }
    for (const char* name : {"", "xml", "a.XML", "a.DITA", "a.xmlx", "a.html", R"(a.xml\)"}) {
        EXPECT_FALSE(IsXmlFile(name)) << name;
    }
    for (const char* text : {"http:", "https:", "http://x", "https://x/a.xml"}) {
        EXPECT_TRUE(IsHttpUrl(text)) << text;
    }
    for (const char* text : {"", "http", "https", "HTTP://x", "xhttp:", " http:", R"(C:\http:)"}) {
        EXPECT_FALSE(IsHttpUrl(text)) << text;
    }
    EXPECT_TRUE(EndsWith("abc", ""));
    EXPECT_TRUE(EndsWith("", ""));
    EXPECT_FALSE(EndsWith("c", "bc"));
}

TEST(PathClassification, RootsOfAListAreComparedByExactBytes) {
    EXPECT_FALSE(SpansSeveralRoots({}));
    EXPECT_FALSE(SpansSeveralRoots({R"(C:\a.xml)"}));
    EXPECT_FALSE(SpansSeveralRoots({R"(C:\a.xml)", R"(C:\x\b.xml)", R"(C:\c.xml)"}));
    EXPECT_TRUE(SpansSeveralRoots({R"(C:\a.xml)", R"(c:\b.xml)"}));
    EXPECT_TRUE(SpansSeveralRoots({R"(C:\a.xml)", R"(C:\b.xml)", "b.xml"}));
    EXPECT_FALSE(SpansSeveralRoots({R"(\\server\share\a.xml)", R"(\\server\other\b.xml)"}));
    EXPECT_FALSE(AnyOutsideRoot({}, R"(C:\)"));
    EXPECT_FALSE(AnyOutsideRoot({R"(C:\a)"}, R"(C:\)"));
    EXPECT_TRUE(AnyOutsideRoot({R"(C:\a)", R"(D:\a)"}, R"(C:\)"));
}

TEST(PathClassification, FirstOccurrenceIsReplaced) {
    const struct {
        const char *text, *oldText, *newText, *output;
    } rows[] = {
        {R"(C:\src\a\C:\src\b)", R"(C:\src\)", R"(C:\out\)", R"(C:\out\a\C:\src\b)"},
        {"abc", "x", "y", "abc"},
        {"abc", "", "y", "yabc"},
        {"abc", "b", "", "ac"},
    };
    for (const auto& row : rows) {
        std::string text = row.text;
        ReplaceFirst(text, row.oldText, row.newText);
        EXPECT_EQ(text, row.output) << row.text << " / " << row.oldText;
    }
}

TEST(PathClassification, CommonFolderEndsAtAWholeComponent) {
    const struct {
        const char *a, *b, *output;
    } rows[] = {
        {R"(C:\docs\alpha\)", R"(C:\docs\alps\)", R"(C:\docs\)"},
        {R"(C:\ab\)", R"(C:\ab\cd\)", R"(C:\ab\)"},
        {R"(C:\ab\)", R"(C:\abc\)", R"(C:\)"},
        {R"(C:\x\)", R"(D:\x\)", ""},
        {R"(C:\Docs\)", R"(C:\docs\)", R"(C:\)"},
        {"", R"(C:\)", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CommonFolder(row.a, row.b), row.output) << row.a << " / " << row.b;
        EXPECT_EQ(CommonFolder(row.b, row.a), row.output) << row.b << " / " << row.a;
    }
}

TEST(PathClassification, CommonBaseFolderIsAPrefixOfEveryFile) {
    EXPECT_EQ(CommonBaseFolder({}), "");
    EXPECT_EQ(CommonBaseFolder({R"(C:\x\a.xml)"}), R"(C:\x\)");
    EXPECT_EQ(CommonBaseFolder({R"(C:\x\a.xml)", R"(D:\x\b.xml)"}), "");
    EXPECT_EQ(
        CommonBaseFolder({R"(C:\src\maps\m.ditamap)", R"(C:\src\topics\a.dita)", R"(C:\src\maps\b.dita)"}),
        R"(C:\src\)");
    EXPECT_EQ(CommonBaseFolder({"a.xml", R"(C:\x\b.xml)"}), "");
}

}  // namespace
}  // namespace ventrix::test
