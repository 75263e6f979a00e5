#include "desk/output/output_keeper.h"

#include <gmock/gmock.h>
#include <pwd.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <random>

#include "desk/output/entries.h"
#include "output_fixture.h"
#include "support/mount.h"

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
    fs::create_directory_symlink(Native("out/.git"), Native("out/link"));
    fs::permissions(Native("out/.git"), fs::perms(0500));
    fs::permissions(Native("out"), fs::perms(0750));

    const auto keeper = Take();
    ASSERT_TRUE(keeper) << refusal;
    EXPECT_EQ(TreeOf("out"), Tree());
    WriteAll("out", {{"index.html", "2"},
                     {"edited.html", "2"},
                     {"sub/a.html", "2"},
                     {"taken/y.html", "2"},
                     {"folder", "2"}});
    const OutputReport report = keeper->Commit();

    EXPECT_EQ(TreeOf("out"), (Tree{{".git", "/"},
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
                                   {"taken/y.html", "2"}}));
    EXPECT_EQ(Count(), 1);
    EXPECT_EQ(ModeOf(Native("out")), fs::perms(0750));
    EXPECT_EQ(ModeOf(Native("out/.git")), fs::perms(0500));
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
    EXPECT_EQ(ModeOf(Native("out")), fs::perms(0711));
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
    fs::create_symlink(Native("nowhere"), Native("dangling"));
    fs::create_directory_symlink(Native("source"), Native("view"));
    Write(".busy.ventrix-run/earlier/page.html", "");
    const char* home = std::getenv("HOME");
    const std::string homeBefore = home == nullptr ? "" : home;
    ::setenv("HOME", Native("home/me").c_str(), 1);
    const Tree before = TreeOf();
    const struct {
        std::string folder;
        const char* reason;
        bool force;
    } cases[] = {
        {Native("file"), "is not a folder", true},
        {Native("file/sub"), "cannot be created", true},
        {Native("dangling"), "is not a folder", true},
        {Native("mine"), "was not created by an earlier run", false},
        {Native("source"), "which the run reads", true},
        {Native("view"), "which the run reads", true},
        {Native("home"), "home folder or a root", true},
        {"/", "home folder or a root", true},
        {"/etc", "which no run created", true},
        {Native("busy"), "without a readable journal", true},
        {Native(std::string(250, 'x')), "File name too long", true},
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
    ::setenv("HOME", homeBefore.c_str(), 1);
}

TEST_F(Keeper, SecondRunIsRefusedWhileTheFirstLives) {
    const auto first = Take();
    ASSERT_TRUE(first);
    WriteAll("out", {{"index.html", "1"}});
    EXPECT_FALSE(Take());
    EXPECT_THAT(refusal, HasSubstr("another run"));
    fs::create_directory_symlink(Native("out"), Native("view"));
    OutputOrder order = Order();
    order.folder = Native("view");
    EXPECT_FALSE(Take(order));
    EXPECT_EQ(first->Commit().error, "");
    EXPECT_EQ(TreeOf("out"), (Tree{{"index.html", "1"}, {kResultMark, "mark"}}));
}

TEST_F(Keeper, MountedThingsInTheFolderAreRefused) {
    Write("source/guide.dita", "source");
    Publish({{"index.html", "1"}});
    fs::create_directory(Native("out/mnt"));
    const auto mount = test::Mount::Bind(Native("source"), Native("out/mnt"));
    if (!mount.IsMounted()) {
        GTEST_SKIP() << "this process may not mount";
    }
    EXPECT_FALSE(Take(Order(true)));
    EXPECT_THAT(refusal, HasSubstr("out/mnt"));
    OutputOrder view = Order(true);
    view.folder = Native("out/mnt");
    view.inputs = {Native("source/guide.dita")};
    EXPECT_FALSE(Take(view));
    EXPECT_THAT(refusal, HasSubstr("which the run reads"));
    EXPECT_EQ(Read("source/guide.dita"), "source");
}

TEST_F(Keeper, MountPointHoldsResultsButNoForeignFiles) {
    fs::create_directory(Native("volume"));
    fs::create_directories(Native("out"));
    const auto mount = test::Mount::Bind(Native("volume"), Native("out"));
    if (!mount.IsMounted()) {
        GTEST_SKIP() << "this process may not mount";
    }
    fs::create_directory(Native("out/lost+found"));
    Publish({{"index.html", "1"}, {"sub/a.html", "1"}});
    {
        const auto keeper = Take();
        ASSERT_TRUE(keeper) << refusal;
        ASSERT_EQ(keeper->Notes().size(), 1U);
        EXPECT_THAT(keeper->Notes()[0],
                    HasSubstr("is a mount point, so the earlier result cannot be set aside"));
        EXPECT_FALSE(Take());
        EXPECT_THAT(refusal, HasSubstr("another run"));
        EXPECT_EQ(TreeOf("out"), (Tree{{"lost+found", "/"}}));
        WriteAll("out", {{"index.html", "half"}});
        EXPECT_EQ(keeper->RollBack().failedFolder, Native("out"));
    }
    EXPECT_EQ(TreeOf("out"), (Tree{{"index.html", "half"}, {kResultMark, "mark"}}));
    Publish({{"index.html", "2"}});
    Write("out/notes.txt", "mine");
    EXPECT_FALSE(Take(Order(true)));
    EXPECT_THAT(refusal, StartsWith("is a mount point and contains notes.txt"));
    EXPECT_THAT(refusal, HasSubstr("choose a folder inside it"));
    EXPECT_EQ(Read("out/notes.txt"), "mine");
    EXPECT_EQ(Read("out/index.html"), "2");
    EXPECT_FALSE(Exists(".out.ventrix-run"));
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

/// Runs as an ordinary user, to whom permissions apply. True if `action` gave true.
bool SucceedsAsOrdinaryUser(const std::function<bool()>& action) {
    const pid_t child = ::fork();
    if (child == 0) {
        const passwd* nobody = ::getpwnam("nobody");
        const bool ordinary = ::geteuid() != 0 || (nobody != nullptr && ::setgid(nobody->pw_gid) == 0 &&
                                                   ::setuid(nobody->pw_uid) == 0);
        ::_exit(ordinary && action() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(Keeper, ReadOnlyResultIsReplacedOrPutBackAsItWas) {
    fs::permissions(Native(), fs::perms::all);
    const auto scenario = [&] {
        std::unique_ptr<OutputKeeper> keeper = Take();
        WriteAll("out", {{"index.html", "1"}, {"sub/a.html", "1"}});
        keeper->Commit();
        WriteAll("out", {{"sub/notes.txt", "mine"}, {"own/x.txt", "mine"}});
        for (const char* name : {"out/sub", "out/own", "out"}) {
            fs::permissions(Native(name), fs::perms(0555));
        }
        keeper = Take();
        WriteAll("out", {{"index.html", "half"}});
        keeper->RollBack();
        const bool isAsBefore = Read("out/index.html") == "1" && ModeOf(Native("out")) == fs::perms(0555);
        keeper = Take();
        WriteAll("out", {{"index.html", "2"}});
        const OutputReport report = keeper->Commit();
        return isAsBefore && report.findings.empty() && ModeOf(Native("out")) == fs::perms(0555) &&
               ModeOf(Native("out/own")) == fs::perms(0555) && ModeOf(Native("out/sub")) == fs::perms(0555);
    };
    EXPECT_TRUE(SucceedsAsOrdinaryUser(scenario));
    EXPECT_EQ(TreeOf("out"), (Tree{{"index.html", "2"},
                                   {kResultMark, "mark"},
                                   {"sub", "/"},
                                   {"sub/notes.txt", "mine"},
                                   {"own", "/"},
                                   {"own/x.txt", "mine"}}));
    for (const char* name : {"out", "out/sub", "out/own"}) {
        fs::permissions(Native(name), fs::perms(0777));
    }
}

TEST_F(Keeper, FolderWhoseParentIsReadOnlyIsUsedInPlace) {
    fs::permissions(Native(), fs::perms::all);
    EXPECT_TRUE(SucceedsAsOrdinaryUser([&] {
        fs::create_directories(Native("site/out"));
        fs::permissions(Native("site"), fs::perms(0555));
        OutputOrder order = Order();
        order.folder = Native("site/out");
        auto keeper = Take(order);
        WriteAll("site/out", {{"index.html", "1"}});
        const bool isPublished = keeper && keeper->Commit().error.empty();
        Write("site/out/notes.txt", "mine");
        const bool isRefused = !Take(order) && refusal.starts_with("is in a folder that is not writable");
        order.folder = Native("site/new");
        return isPublished && isRefused && !Take(order) && refusal.starts_with("cannot be created");
    }));
    EXPECT_EQ(Read("site/out/notes.txt"), "mine");
    fs::permissions(Native("site"), fs::perms(0777));
}

TEST_F(Keeper, EntryThatCannotBePutBackIsAFindingUntilItCan) {
    const passwd* nobody = ::getpwnam("nobody");
    if (::geteuid() != 0 || nobody == nullptr) {
        GTEST_SKIP() << "this process cannot give files to another user";
    }
    fs::permissions(Native(), fs::perms::all);
    ASSERT_TRUE(SucceedsAsOrdinaryUser([&] {
        Publish({{"index.html", "1"}});
        return true;
    }));
    Write("out/locked/theirs.txt", "theirs");
    EXPECT_TRUE(SucceedsAsOrdinaryUser([&] {
        auto keeper = Take();
        Write("out/index.html", "2");
        const OutputReport report = keeper->Commit();
        keeper.reset();
        const bool isNamed = !report.findings.empty() &&
                             report.findings[0].find("earlier/locked/theirs.txt") != std::string::npos;
        return isNamed && !Take() && refusal.starts_with("still has parts of an earlier result");
    }));
    EXPECT_EQ(Read("out/index.html"), "2");
    EXPECT_EQ(Read(".out.ventrix-run/earlier/locked/theirs.txt"), "theirs");
    ASSERT_EQ(::chown(Native(".out.ventrix-run/earlier/locked").c_str(), nobody->pw_uid, nobody->pw_gid), 0);
    EXPECT_TRUE(SucceedsAsOrdinaryUser([&] {
        const auto keeper = Take();
        return keeper && keeper->Notes().size() == 1;
    }));
    EXPECT_EQ(
        TreeOf("out"),
        (Tree{{"index.html", "2"}, {kResultMark, "mark"}, {"locked", "/"}, {"locked/theirs.txt", "theirs"}}));
    EXPECT_EQ(Count(), 1);
}

TEST_F(Keeper, FullDiskLosesNothing) {
    fs::create_directory(Native("disk"));
    const auto disk = test::Mount::Disk(Native("disk"), 256 * 1024);
    if (!disk.IsMounted()) {
        GTEST_SKIP() << "this process may not mount";
    }
    OutputOrder order = Order();
    order.folder = Native("disk/out");
    auto keeper = Take(order);
    Write("disk/out/index.html", "1");
    ASSERT_EQ(keeper->Commit().error, "");
    Write("disk/out/notes.txt", "mine");
    const Tree before = TreeOf("disk/out");

    keeper = Take(order);
    Write("disk/out/index.html", std::string(1'000'000, '2'));
    EXPECT_THAT(keeper->Commit().error, HasSubstr("No space left"));
    EXPECT_EQ(TreeOf("disk/out"), before);
    EXPECT_TRUE(IsFolder(Native("disk/out.failed")));
    EXPECT_FALSE(Take(order));
    EXPECT_THAT(refusal, HasSubstr("No space left"));
    EXPECT_EQ(TreeOf("disk/out"), before);
    EXPECT_FALSE(Exists("disk/.out.ventrix-run"));
}

constexpr int kPages = 40;

/// One run that may be killed at any moment; every page holds the run's number.
void RunOnce(const OutputOrder& order, const test::TestFolder& folder, int number) {
    std::string refusal;
    const auto keeper = TakeOutput(order, refusal);
    for (int page = 0; keeper && page < kPages; ++page) {
        folder.Write("out/sub" + std::to_string(page % 4) + "/" + std::to_string(page) + ".html",
                     std::to_string(number));
    }
    ::_exit(keeper && keeper->Commit().error.empty() ? 0 : 1);
}

class KilledRuns : public OutputFixture {
  protected:
    /// How long run 0 takes.
    std::chrono::microseconds WholeRun() {
        const auto start = std::chrono::steady_clock::now();
        const pid_t child = ::fork();
        if (child == 0) {
            RunOnce(Order(), *this, 0);
        }
        ::waitpid(child, nullptr, 0);
        return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                     start);
    }

    /// Starts a run, kills it after the time, and gives whether it had ended by itself.
    bool RunAndKill(int number, std::chrono::microseconds after) {
        const pid_t child = ::fork();
        if (child == 0) {
            RunOnce(Order(), *this, number);
        }
        ::usleep(static_cast<useconds_t>(after.count()));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    /// The number that all pages hold; -1 for a mixture or an incomplete result.
    int NumberOfResult() const {
        std::string number;
        int pages = 0;
        for (const auto& [name, content] : TreeOf("out")) {
            if (name.ends_with(".html")) {
                ++pages;
                number = number.empty() ? content : number;
                if (content != number) {
                    return -1;
                }
            }
        }
        return pages == kPages ? std::stoi(number) : -1;
    }
};

TEST_F(KilledRuns, LeaveTheEarlierOrTheNewResultAndAllForeignFiles) {
    std::chrono::microseconds latest = WholeRun() * 5 / 4;
    ASSERT_EQ(NumberOfResult(), 0);
    WriteAll("out", {{"notes.txt", "mine"}, {"sub1/notes.txt", "mine"}, {"own/deep/x.txt", "mine"}});
    std::mt19937 random(7);
    int last = 0;
    int killed = 0;
    for (int number = 1; number <= 50; ++number) {
        const bool ended = RunAndKill(number, std::chrono::microseconds(random() % latest.count()));
        killed += ended ? 0 : 1;
        // How long a run takes changes with the load of the machine.
        latest = ended ? latest * 15 / 16 : latest * 17 / 16;
        {
            const auto next = Take();
            ASSERT_TRUE(next) << refusal;
        }
        const int now = NumberOfResult();
        ASSERT_TRUE(now == last || now == number) << "after run " << number << ": " << now;
        last = now;
        ASSERT_EQ(Read("out/notes.txt") + Read("out/sub1/notes.txt") + Read("out/own/deep/x.txt"),
                  "mineminemine")
            << "after run " << number;
        ASSERT_FALSE(Exists(".out.ventrix-run"));
    }
    EXPECT_GT(killed, 5);
    EXPECT_GT(last, 0);
}

}  // namespace
}  // namespace ventrix::desk
