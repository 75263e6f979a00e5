// The output folder with what only POSIX has: links, mounts, the rights of other users, and a copy of the
// process that is killed.
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

using KeeperOnPosix = OutputFixture;

TEST_F(KeeperOnPosix, LinksLeadToTheirTargets) {
    WriteAll("source", {{"guide.dita", ""}});
    fs::create_symlink(Native("nowhere"), Native("dangling"));
    fs::create_directory_symlink(Native("source"), Native("view"));
    fs::create_directory_symlink(Native("out"), Native("out-view"));
    const auto first = Take();
    ASSERT_TRUE(first);
    const struct {
        const char *folder, *reason;
    } cases[] = {
        {"dangling", "is not a folder"},
        {"view", "which the run reads"},
        {"out-view", "another run"},
    };
    for (const auto& row : cases) {
        OutputOrder order = Order(true);
        order.folder = Native(row.folder);
        order.inputs = {Native("source/guide.dita")};
        EXPECT_FALSE(Take(order)) << row.folder;
        EXPECT_THAT(refusal, HasSubstr(row.reason)) << row.folder;
    }
    EXPECT_EQ(Read("source/guide.dita"), "");
}

TEST_F(KeeperOnPosix, MountedThingsInTheFolderAreRefused) {
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

TEST_F(KeeperOnPosix, MountPointHoldsResultsButNoForeignFiles) {
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

TEST_F(KeeperOnPosix, ReadOnlyResultIsReplacedOrPutBackAsItWas) {
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

TEST_F(KeeperOnPosix, FolderWhoseParentIsReadOnlyIsUsedInPlace) {
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

TEST_F(KeeperOnPosix, EntryThatCannotBePutBackIsAFindingUntilItCan) {
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

TEST_F(KeeperOnPosix, FullDiskLosesNothing) {
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
