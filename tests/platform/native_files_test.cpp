#include "platform/native_files.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <sstream>

#include "platform/file_identity.h"
#include "platform/file_lock.h"
#include "platform/mount_points.h"
#include "platform/posix/mount_table.h"
#include "support/mount.h"
#include "support/test_folder.h"

namespace fs = std::filesystem;

namespace ventrix::platform {
namespace {

class NativeFiles : public testing::Test, protected test::TestFolder {};

TEST_F(NativeFiles, FolderContainsWhatLinksAndSpellingsLeadTo) {
    Write("real/sub/a.txt", "a");
    Write("realm/b.txt", "b");
    fs::create_directory_symlink(Native("real"), Native("view"));
    fs::create_symlink(Native("realm/b.txt"), Native("real/link.txt"));
    const struct {
        const char* path;
        const char* folder;
        bool liesIn;
    } cases[] = {
        {"real/sub/a.txt", "real", true},     {"real", "real", true},
        {"view/sub/a.txt", "real", true},     {"real/sub/a.txt", "view", true},
        {"real/link.txt", "real", true},      {"real/link.txt", "realm", true},
        {"realm/b.txt", "real", false},       {"real/../realm/b.txt", "real", false},
        {"real", "real/sub", false},          {"real/missing.txt", "real", false},
        {"real/sub/a.txt", "missing", false},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(LiesIn(Native(row.path), Native(row.folder)), row.liesIn)
            << row.path << " in " << row.folder;
    }
}

TEST_F(NativeFiles, OnlyRegularFilesAreRead) {
    Write("file", std::string(100'000, 'x'));
    fs::create_symlink(Native("file"), Native("link"));
    ASSERT_EQ(::mkfifo(Native("pipe").c_str(), 0600), 0);
    const struct {
        std::string path;
        std::uint64_t limit;
        std::errc error;
    } rows[] = {
        {Native("file"), 100'000, {}},
        {Native("link"), 100'000, {}},
        {Native("file"), 99'999, std::errc::file_too_large},
        {Native("missing"), 1, std::errc::no_such_file_or_directory},
        {Native(std::string(300, 'n')), 1, std::errc::filename_too_long},
        {Native(), 1, std::errc::is_a_directory},
        {Native("pipe"), 1, std::errc::not_supported},
        {"/dev/zero", 1, std::errc::not_supported},
    };
    for (const auto& row : rows) {
        std::string content = "former";
        EXPECT_EQ(ReadRegularFile(row.path, row.limit, content), std::make_error_condition(row.error))
            << row.path;
        EXPECT_EQ(content.size(), row.error == std::errc{} ? 100'000u : 0u) << row.path;
    }
}

TEST_F(NativeFiles, BindMountsAreFoundAndCountAsTheSameFolder) {
    Write("source/a.txt", "a");
    fs::create_directories(Native("out/with space"));
    const auto mount = test::Mount::Bind(Native("source"), Native("out/with space"));
    if (!mount.IsMounted()) {
        GTEST_SKIP() << "this process may not mount";
    }
    EXPECT_TRUE(LiesIn(Native("source/a.txt"), Native("out/with space")));
    EXPECT_FALSE(LiesIn(Native("source/a.txt"), Native("out")));
    EXPECT_TRUE(IsMountPoint(Native("out/with space")));
    EXPECT_FALSE(IsMountPoint(Native("out")));
    EXPECT_EQ(MountPointsBelow(Native("out")), std::vector<fs::path>{Native("out/with space")});
    EXPECT_TRUE(MountPointsBelow(Native("out/with space")).empty());
    EXPECT_TRUE(MountPointsBelow(Native("missing")).empty());
}

TEST(MountTable, EscapedNamesAreResolvedAndShortLinesSkipped) {
    std::istringstream table(
        "36 35 98:0 /mnt1 /mnt\\0402/a\\134b rw - ext3 /dev/root rw\n"
        "broken line\n"
        "37 35 98:0 / /plain\\ rw - ext3 /dev/root rw\n");
    EXPECT_EQ(ReadMountTable(table), (std::vector<fs::path>{"/mnt 2/a\\b", "/plain\\"}));
}

TEST_F(NativeFiles, RenameNeverReplaces) {
    Write("a.txt", "a");
    Write("b.txt", "b");
    fs::create_directory(Native("empty"));
    fs::create_directory(Native("folder"));
    fs::create_symlink("nowhere", Native("link"));
    for (const char* taken : {"b.txt", "empty", "link"}) {
        EXPECT_EQ(RenameToFree(Native("a.txt"), Native(taken)), std::errc::file_exists) << taken;
    }
    EXPECT_EQ(RenameToFree(Native("folder"), Native("empty")), std::errc::file_exists);
    EXPECT_EQ(RenameToFree(Native("missing"), Native("c.txt")), std::errc::no_such_file_or_directory);
    EXPECT_FALSE(RenameToFree(Native("a.txt"), Native("c.txt")));
    EXPECT_EQ(Read("c.txt"), "a");
    EXPECT_EQ(Read("b.txt"), "b");
}

TEST_F(NativeFiles, DurableWriteReplacesTheWholeFileOrNothing) {
    EXPECT_FALSE(WriteDurably(Native("a.json"), "one"));
    EXPECT_FALSE(WriteDurably(Native("a.json"), "two"));
    EXPECT_EQ(Read("a.json"), "two");
    fs::create_directory(Native("b.json"));
    EXPECT_TRUE(WriteDurably(Native("b.json"), "three"));
    EXPECT_TRUE(WriteDurably(Native("missing/c.json"), "four"));
    EXPECT_EQ(Count(), 2);
}

TEST_F(NativeFiles, StatusDescribesTheEntryItself) {
    Write("a.txt", "four");
    fs::create_symlink("a.txt", Native("link"));
    EXPECT_EQ(StatusOfEntry(Native("a.txt"))->size, 4U);
    EXPECT_EQ(StatusOfEntry(Native("a.txt"))->kind, EntryKind::kFile);
    EXPECT_EQ(StatusOfEntry(Native("link"))->kind, EntryKind::kOther);
    EXPECT_EQ(StatusOfEntry(Native())->kind, EntryKind::kFolder);
    std::error_code error;
    EXPECT_FALSE(StatusOfEntry(Native("missing"), error));
    EXPECT_FALSE(error);
    EXPECT_FALSE(StatusOfEntry(Native(std::string(300, 'x')), error));
    EXPECT_TRUE(error);
}

TEST_F(NativeFiles, LockExcludesOthersUntilItsOwnerEnds) {
    auto first = LockFile(Native("lock"));
    ASSERT_TRUE(first.lock);
    EXPECT_TRUE(LockFile(Native("lock")).busy);
    first.lock.reset();
    EXPECT_TRUE(LockFile(Native("lock")).lock);
    EXPECT_TRUE(LockFolder(Native()).lock);
    EXPECT_TRUE(LockFile(Native("missing/lock")).error);
    fs::create_symlink(Native("elsewhere"), Native("link"));
    EXPECT_TRUE(LockFile(Native("link")).error);
    EXPECT_FALSE(Exists("elsewhere"));
}

TEST_F(NativeFiles, LockOfADeletedFileDoesNotCountForANewOne) {
    const auto first = LockFile(Native("lock"));
    fs::remove(Native("lock"));
    EXPECT_TRUE(LockFile(Native("lock")).lock);
}

TEST_F(NativeFiles, LockOfAKilledProcessIsFree) {
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const auto held = LockFile(Native("lock"));
        [[maybe_unused]] const auto written = ::write(ready[1], held.lock ? "+" : "-", 1);
        ::pause();
        ::_exit(0);
    }
    char state = 0;
    ASSERT_EQ(::read(ready[0], &state, 1), 1);
    EXPECT_EQ(state, '+');
    EXPECT_TRUE(LockFile(Native("lock")).busy);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(LockFile(Native("lock")).lock);
    ::close(ready[0]);
    ::close(ready[1]);
}

}  // namespace
}  // namespace ventrix::platform
