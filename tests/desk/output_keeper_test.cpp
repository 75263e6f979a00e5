#include "desk/output/output_keeper.h"

#include <gmock/gmock.h>

#include "desk/output/entries.h"
#include "output_fixture.h"
#include "support/environment.h"
#include "support/links.h"

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

namespace ventrix::desk {
namespace {

using Keeper = OutputFixture;

TEST_F(Keeper, SuccessKeepsForeignFilesAndNamesWhatIsRenamed) {
    Publish({{"index.html", "1"},
             {"edited.html", "1"},
             {"stale.html", "1"},
             {"sub/a.html", "1"},
             {"old/b.html", "1"}});
    WriteAll("out", {{".git/config", "mine"},
                     {"CNAME", "mine"},
                     {"edited.html", "mine"},
                     {"edited.html.edited", "mine too"},
                     {"sub/notes.txt", "mine"},
                     {"old/c.txt", "mine"},
                     {"taken", "mine"},
                     {"folder/x.txt", "mine"}});
    test::MakeLink(Native("out/.git"), Native("out/link"));
    fs::permissions(Native("out/.git"), fs::perms(0500));
    fs::permissions(Native("out"), fs::perms(0750));
    const fs::perms mode = ModeOf(Native("out"));
    const fs::perms foreignMode = ModeOf(Native("out/.git"));

    const auto keeper = Take();
    ASSERT_TRUE(keeper) << refusal;
    EXPECT_EQ(TreeOf("out"), Tree());
    WriteAll("out", {{"index.html", "2"},
                     {"edited.html", "2"},
                     {"sub/a.html", "2"},
                     {"taken/y.html", "2"},
                     {"folder", "2"}});
    const OutputReport report = keeper->Commit();

    Tree expected = {{".git", "/"},
                     {".git/config", "mine"},
                     {kResultMark, "mark"},
                     {"CNAME", "mine"},
                     {"edited.html", "2"},
                     {"edited.html.edited", "mine too"},
                     {"edited.html.edited.2", "mine"},
                     {"folder", "2"},
                     {"folder.kept", "/"},
                     {"folder.kept/x.txt", "mine"},
                     {"index.html", "2"},
                     {"link", "@"},
                     {"old", "/"},
                     {"old/c.txt", "mine"},
                     {"sub", "/"},
                     {"sub/a.html", "2"},
                     {"sub/notes.txt", "mine"},
                     {"taken", "/"},
                     {"taken.kept", "mine"},
                     {"taken/y.html", "2"}};
    if (!test::kHasLinks) {
        expected.erase("link");
    }
    EXPECT_EQ(TreeOf("out"), expected);
    EXPECT_EQ(Count(), 1);
    EXPECT_EQ(ModeOf(Native("out")), mode);
    EXPECT_EQ(ModeOf(Native("out/.git")), foreignMode);
    EXPECT_EQ(report.error, "");
    EXPECT_TRUE(report.findings.empty());
    Tree renamed;
    for (const KeptEntry& entry : report.kept) {
        renamed[entry.wanted.filename().string()] =
            entry.kept.filename().string() + (entry.edited ? " edited" : "");
    }
    EXPECT_EQ(renamed, (Tree{{"edited.html", "edited.html.edited.2 edited"},
                             {"folder", "folder.kept"},
                             {"taken", "taken.kept"}}));
}

TEST_F(Keeper, FailureLeavesEverythingAsItWas) {
    Publish({{"index.html", "1"}});
    WriteAll("out", {{"notes.txt", "mine"}});
    fs::permissions(Native("out"), fs::perms(0711));
    const fs::perms mode = ModeOf(Native("out"));
    const Tree before = TreeOf("out");
    {
        const auto keeper = Take();
        ASSERT_TRUE(keeper) << refusal;
        WriteAll("out", {{"index.html", "half"}});
        const OutputReport report = keeper->RollBack();
        EXPECT_EQ(report.failedFolder, Native("out.failed"));
        EXPECT_EQ(report.error, "");
    }
    EXPECT_EQ(TreeOf("out"), before);
    EXPECT_EQ(ModeOf(Native("out")), mode);
    EXPECT_EQ(TreeOf("out.failed"), (Tree{{"index.html", "half"}, {kFailedMark, "mark"}}));
    { const auto forgotten = Take(); }
    EXPECT_EQ(TreeOf("out"), before);
    EXPECT_EQ(Count(), 2);
}

TEST_F(Keeper, FailureRemovesTheFoldersThatItMade) {
    OutputOrder order = Order();
    order.folder = Native("a/b/out");
    {
        const auto keeper = Take(order);
        ASSERT_TRUE(keeper) << refusal;
        EXPECT_TRUE(IsFolder(Native("a/b/out")));
    }
    EXPECT_EQ(Count(), 0);
}

TEST_F(Keeper, CommitThatCannotBeRecordedRollsBack) {
    Publish({{"index.html", "1"}});
    const auto keeper = Take();
    // A folder has the manifest's name.
    WriteAll("out", {{"index.html", "2"}, {std::string(kResultMark) + "/x", "2"}});
    const OutputReport report = keeper->Commit();
    EXPECT_THAT(report.error, StartsWith("the result cannot be recorded"));
    EXPECT_EQ(report.failedFolder, Native("out.failed"));
    EXPECT_EQ(TreeOf("out"), (Tree{{"index.html", "1"}, {kResultMark, "mark"}}));
}

TEST_F(Keeper, FolderThatNoRunCreatedNeedsForceAndKeepsItsFiles) {
    WriteAll("out", {{"index.html", "mine"}, {kResultMark, "not a manifest"}});
    EXPECT_FALSE(Take());
    EXPECT_THAT(refusal, HasSubstr("--force"));
    const auto keeper = Take(Order(true));
    ASSERT_TRUE(keeper) << refusal;
    WriteAll("out", {{"index.html", "new"}});
    EXPECT_EQ(keeper->Commit().kept.size(), 2U);
    EXPECT_EQ(TreeOf("out"), (Tree{{"index.html", "new"},
                                   {"index.html.kept", "mine"},
                                   {kResultMark, "mark"},
                                   {std::string(kResultMark) + ".kept", "not a manifest"}}));
}

TEST_F(Keeper, RefusalNamesItsReasonAndChangesNothing) {
    Write("file", "");
    WriteAll("mine", {{"a.txt", ""}});
    WriteAll("source", {{"guide.dita", ""}});
    WriteAll("home/me", {{"a.txt", ""}});
    Write(".busy.ventrix-run/earlier/page.html", "");
    const test::VariableChange home(test::kHome, Native("home/me"));
    const Tree before = TreeOf();
    const struct {
        std::string folder;
        const char* reason;
        bool force;
    } cases[] = {
        {Native("file"), "is not a folder", true},
        {Native("file/sub"), "cannot be created", true},
        {Native("mine"), "was not created by an earlier run", false},
        {Native("source"), "which the run reads", true},
        {Native("home"), "home folder or a root", true},
        {test::kDriveZ + "/", "home folder or a root", true},
        {test::kDriveZ + "/etc", "which no run created", true},
        {Native("busy"), "without a readable journal", true},
        {Native(std::string(250, 'x')), test::kHasAnyNames ? "File name too long" : "cannot be created",
         true},
    };
    for (const auto& row : cases) {
        OutputOrder order = Order(row.force);
        order.folder = row.folder;
        order.inputs = {Native("source/guide.dita"), Native("source/missing.dita")};
        EXPECT_FALSE(Take(order)) << row.folder;
        EXPECT_THAT(refusal, HasSubstr(row.reason)) << row.folder;
    }
    // The lock of the folder with the unreadable run.
    fs::remove(Native(".busy.ventrix-run/lock"));
    EXPECT_EQ(TreeOf(), before);
}

TEST_F(Keeper, SecondRunIsRefusedWhileTheFirstLives) {
    const auto first = Take();
    ASSERT_TRUE(first);
    WriteAll("out", {{"index.html", "1"}});
    EXPECT_FALSE(Take());
    EXPECT_THAT(refusal, HasSubstr("another run"));
    EXPECT_EQ(first->Commit().error, "");
    EXPECT_EQ(TreeOf("out"), (Tree{{"index.html", "1"}, {kResultMark, "mark"}}));
}

TEST_F(Keeper, CurrentFolderIsUsedInPlace) {
    Publish({{"index.html", "1"}});
    const fs::path before = fs::current_path();
    fs::current_path(Native("out"));
    {
        const auto keeper = Take();
        ASSERT_TRUE(keeper) << refusal;
        EXPECT_THAT(keeper->Notes()[0], HasSubstr("is or contains the current folder"));
        WriteAll("out", {{"index.html", "2"}});
        EXPECT_EQ(keeper->Commit().error, "");
    }
    EXPECT_EQ(fs::canonical("."), Native("out"));
    fs::current_path(before);
    EXPECT_EQ(TreeOf("out"), (Tree{{"index.html", "2"}, {kResultMark, "mark"}}));
}

}  // namespace
}  // namespace ventrix::desk
