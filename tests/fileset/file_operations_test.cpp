#include "fileset/file_operations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/links.h"
#include "support/test_drives.h"

namespace ventrix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class FileOperations : public testing::Test {
  protected:
    test::TestDrives drives;
};

TEST_F(FileOperations, FilesAndFoldersAreDistinguished) {
    drives.Write(R"(C:\a\b.xml)", "x");
    EXPECT_TRUE(FileReadable(R"(C:\a\b.xml)"));
    EXPECT_FALSE(FileReadable(R"(C:\a\)")) << "a folder is not a readable file";
    EXPECT_FALSE(FileReadable(R"(C:\a\missing.xml)"));
    EXPECT_FALSE(FileReadable(""));
    EXPECT_TRUE(IsFolder(R"(C:\a)"));
    EXPECT_TRUE(IsFolder(R"(C:\a\)"));
    EXPECT_FALSE(IsFolder(R"(C:\a\b.xml)"));
    EXPECT_FALSE(IsFolder(R"(C:\missing)"));
}

TEST_F(FileOperations, FilesAreInAFolderWhateverTheyAreCalled) {
    const std::string inside = R"(C:\out\a.xml)";
    const std::string linked = R"(C:\src\link.xml)";
    for (const std::string& file :
         {inside, std::string(R"(C:\out\sub\b.xml)"), std::string(R"(C:\src\c.xml)")}) {
        drives.Write(file, "");
    }
    FileList expected = {R"(C:\out)", R"(C:\src\..\out\a.xml)", inside, R"(C:\out\sub\b.xml)"};
    if (test::kHasLinks) {
        fs::create_symlink(drives.Native(inside), drives.Native(linked));
        expected.push_back(linked);
    }
    EXPECT_EQ(FilesIn({R"(C:\src\c.xml)", R"(C:\out)", R"(C:\src\..\out\a.xml)", inside, R"(C:\out\none.xml)",
                       R"(C:\out\sub\b.xml)", linked},
                      R"(C:\out\)"),
              expected);
    EXPECT_THAT(FilesIn({inside}, R"(C:\none\)"), IsEmpty());
}

TEST_F(FileOperations, EnsureFolderCreatesAllMissingParents) {
    drives.Write(R"(C:\file)", "x");
    const struct {
        const char* folder;
        bool made;
    } rows[] = {
        {R"(C:\a\b\c\)", true},
        {R"(C:\a\b\c)", true},
        {R"(C:\x\y)", true},
        {R"(C:\)", true},
        {R"(\\server\s\deep\)", true},
        {R"(Q:\no\drive\)", false},
        {"no-such-name", false},
        {R"(no-such\folder\)", false},
        {"", false},
        {R"(C:\file\below)", false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(EnsureFolder(row.folder), row.made) << row.folder;
        EXPECT_EQ(IsFolder(row.folder), row.made) << row.folder;
    }
}

TEST_F(FileOperations, CopyCreatesFoldersAndAWritableTarget) {
    drives.Write(R"(C:\src\a.xml)", "new");
    drives.Write(R"(C:\out\old.xml)", "old and longer");
    fs::permissions(drives.Native(R"(C:\src\a.xml)"), fs::perms::owner_read);

    EXPECT_TRUE(CopyFileInto(R"(C:\src\a.xml)", R"(D:\deep\er\b.xml)"));
    EXPECT_EQ(drives.Read(R"(D:\deep\er\b.xml)"), "new");
    EXPECT_NE(fs::status(drives.Native(R"(D:\deep\er\b.xml)")).permissions() & fs::perms::owner_write,
              fs::perms::none);
    EXPECT_TRUE(CopyFileInto(R"(C:\src\a.xml)", R"(C:\out\old.xml)"));
    EXPECT_EQ(drives.Read(R"(C:\out\old.xml)"), "new");
    EXPECT_TRUE(CopyFileInto(R"(C:\src\a.xml)", R"(C:\at-the-root.xml)"));
    EXPECT_FALSE(CopyFileInto(R"(C:\src\missing.xml)", R"(C:\out\b.xml)"));
    EXPECT_FALSE(CopyFileInto(R"(C:\src\a.xml)", R"(Q:\no\drive.xml)"));
}

TEST_F(FileOperations, MoveReplacesTheTargetAndKeepsASourceThatCouldNotBeCopied) {
    drives.Write(R"(C:\a.xml)", "new");
    drives.Write(R"(C:\b.xml)", "old");
    MoveFileInto(R"(C:\a.xml)", R"(C:\b.xml)");
    EXPECT_EQ(drives.Read(R"(C:\b.xml)"), "new");
    EXPECT_FALSE(drives.Exists(R"(C:\a.xml)"));

    MoveFileInto(R"(C:\b.xml)", R"(Q:\no\drive.xml)");
    EXPECT_EQ(drives.Read(R"(C:\b.xml)"), "new");
}

TEST_F(FileOperations, CollectWalksDepthFirstInTheOrderOfNames) {
    for (const char* file :
         {"z.html", "B\\y.htm", "B\\inner\\deep.html", "a.html", "A.HTML", "c.xml.html", "d.htmlx"}) {
        drives.Write(R"(C:\out\)" + std::string(file), "");
    }
    EXPECT_THAT(CollectFiles(R"(C:\out)", {".html", ".htm"}),
                ElementsAre(R"(C:\out\a.html)", R"(C:\out\B\inner\deep.html)", R"(C:\out\B\y.htm)",
                            R"(C:\out\c.xml.html)", R"(C:\out\z.html)"));
    EXPECT_THAT(CollectFiles(R"(C:\out\B\)", {"", "y.htm"}),
                ElementsAre(R"(C:\out\B\\inner\deep.html)", R"(C:\out\B\\y.htm)"));
    EXPECT_THAT(CollectFiles(R"(C:\out)", {}), IsEmpty());
    EXPECT_THAT(CollectFiles(R"(C:\missing)", {""}), IsEmpty());
}

TEST_F(FileOperations, CollectingEndsAtLinksToEnclosingFolders) {
    drives.Write(R"(C:\out\sub\a.html)", "");
    for (const char* link : {"C:\\out\\one", "C:\\out\\two", "C:\\out\\sub\\up"}) {
        std::filesystem::create_directory_symlink(drives.Native("C:\\out"), drives.Native(link));
    }
    std::filesystem::create_directory_symlink("sub", drives.Native("C:\\out\\view"));
    EXPECT_THAT(CollectFiles(R"(C:\out)", {".html"}),
                ElementsAre(R"(C:\out\sub\a.html)", R"(C:\out\view\a.html)"));
}

TEST_F(FileOperations, ClearingEmptiesTheFolderButNotItsNeighbours) {
    for (const char* file : {"out\\a.xml", "out\\b\\c\\d.xml", "out-2\\kept.xml", "outer.xml"}) {
        drives.Write(R"(C:\)" + std::string(file), "");
    }
    ClearFolder(R"(C:\out)", false);
    ClearFolder("", false);
    EXPECT_TRUE(drives.Exists(R"(C:\out\a.xml)")) << "without a closing backslash nothing is cleared";

    ClearFolder(R"(C:\out\)", false);
    EXPECT_THAT(drives.Tree(R"(C:\)"), ElementsAre("out-2\\", "out-2\\kept.xml", "out\\", "outer.xml"));
}

TEST_F(FileOperations, PruningRemovesOnlyTreesWithoutAnyFile) {
    drives.Write(R"(C:\out\keep\deep\file.png)", "");
    drives.MakeFolder(R"(C:\out\empty\a\b)");
    drives.MakeFolder(R"(C:\out\keep\beside)");
    ClearFolder(R"(C:\out\)", true);
    EXPECT_THAT(drives.Tree(R"(C:\out\)"), ElementsAre("keep\\", "keep\\deep\\", "keep\\deep\\file.png"));
}

TEST_F(FileOperations, ClearingRemovesLinksButNotTheirTargets) {
    drives.Write(R"(C:\src\a.xml)", "mine");
    drives.MakeFolder(R"(C:\out\)");
    fs::create_directory_symlink(drives.Native(R"(C:\src)"), drives.Native(R"(C:\out\link)"));
    ClearFolder(R"(C:\out\)", true);
    EXPECT_TRUE(drives.Exists(R"(C:\out\link\a.xml)"));
    ClearFolder(R"(C:\out\)", false);
    EXPECT_THAT(drives.Tree(R"(C:\out\)"), IsEmpty());
    EXPECT_EQ(drives.Read(R"(C:\src\a.xml)"), "mine");
}

TEST(FileLists, AppendCopiesInOrder) {
    FileList list = {"a"};
    AppendList(list, {"b", "a"});
    AppendList(list, list);
    EXPECT_THAT(list, ElementsAre("a", "b", "a", "a", "b", "a"));
}

}  // namespace
}  // namespace ventrix
