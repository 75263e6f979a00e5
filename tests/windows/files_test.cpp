// The parts of the seam that the tests of the other platform test with links, pipes and forked processes.
#include "platform/files.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "platform/file_identity.h"
#include "platform/file_lock.h"
#include "platform/folders.h"
#include "platform/native_files.h"
#include "platform/path_text.h"
#include "support/test_folder.h"

namespace ventrix::platform {
namespace {

using test::TestFolder;

std::filesystem::path PathOf(const TestFolder& tree, const std::string& name) {
    return PathFromUtf8(tree.Native(name));
}

TEST(WindowsFiles, LongPathsAndAllCharactersWork) {
    const TestFolder tree;
    std::string folder = tree.System();
    while (folder.size() < 767) {
        folder += '\\' + std::string(60, 'f');
        ASSERT_EQ(MakeFolder(folder), kErrorNone) << folder.size();
    }
    const std::string name = "\xC3\xBC \xE6\xBC\xA2 \xF0\x9F\x98\x80.xml";
    const std::string file = folder + '\\' + name;
    EXPECT_EQ(WriteWholeFile(file, "content"), kErrorNone);
    EXPECT_EQ(CopyFileOver(file, folder + "\\copy"), kErrorNone);
    std::string content;
    EXPECT_EQ(ReadWholeFile(folder + "\\copy", content), kErrorNone);
    EXPECT_EQ(content, "content");
    const std::vector<FolderEntry> entries = ListFolder(folder);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[1].name, name);
    EXPECT_EQ(LongPath(file), file);
    EXPECT_EQ(RemoveFile(file), kErrorNone);
    EXPECT_EQ(RemoveFile(folder + "\\copy"), kErrorNone);
    for (; folder != tree.System(); folder.resize(folder.rfind('\\'))) {
        ASSERT_EQ(RemoveEmptyFolder(folder), kErrorNone);
    }
}

TEST(WindowsFiles, FailedWriteLeavesTheFileAndNothingBesideIt) {
    const TestFolder tree;
    tree.Write("locked", "before");
    tree.Write("read-only", "before");
    ASSERT_EQ(SetAttributes(tree.System("read-only"), kAttributeReadOnly), kErrorNone);
    const HANDLE open = ::CreateFileW(PathOf(tree, "locked").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(open, INVALID_HANDLE_VALUE);
    EXPECT_NE(WriteWholeFile(tree.System("locked"), "after"), kErrorNone);
    EXPECT_EQ(OverwriteFile(tree.System("locked"), [](const PutPiece& put) { return put("after"); }),
              kErrorSharingViolation);
    EXPECT_EQ(RemoveFile(tree.System("locked")), kErrorSharingViolation);
    ::CloseHandle(open);
    EXPECT_EQ(WriteWholeFile(tree.System("read-only"), "after"), kErrorAccessDenied);
    EXPECT_EQ(RemoveFile(tree.System("read-only")), kErrorAccessDenied);
    EXPECT_EQ(WriteWholeFile(tree.System("none\\file"), "after"), kErrorPathNotFound);
    EXPECT_EQ(CopyFileOver(tree.System("locked"), tree.System("locked")), kErrorSharingViolation);
    EXPECT_EQ(tree.Read("locked"), "before");
    EXPECT_EQ(tree.Read("read-only"), "before");
    EXPECT_EQ(tree.Count(), 2);
    SetAttributes(tree.System("read-only"), 0);
}

TEST(WindowsFiles, FolderOperationsGiveTheirErrorCodes) {
    const TestFolder tree;
    tree.Write("folder/file", "x");
    EXPECT_EQ(MakeFolder(tree.System("folder")), kErrorAlreadyExists);
    EXPECT_EQ(MakeFolder(tree.System("none\\folder")), kErrorPathNotFound);
    EXPECT_EQ(RemoveEmptyFolder(tree.System("folder")), kErrorDirNotEmpty);
    EXPECT_EQ(RemoveEmptyFolder(tree.System("folder\\file")), kErrorNotADirectory);
    EXPECT_EQ(RemoveEmptyFolder(tree.System("none")), kErrorFileNotFound);
    EXPECT_EQ(RemoveFile(tree.System("folder")), kErrorAccessDenied);
    EXPECT_EQ(AttributesOf(tree.System("folder\\")), kAttributeDirectory);
    EXPECT_EQ(AttributesOf(tree.System("folder\\file")), 0U);
    EXPECT_EQ(AttributesOf(tree.System("none")), std::nullopt);
}

TEST(WindowsFiles, EntriesAreListedByCapitals) {
    const TestFolder tree;
    for (const char* name : {"b", "A", "\xC3\xA4", "_", "Z", "a1"}) {
        tree.Write(name, "");
    }
    std::string names;
    for (const FolderEntry& entry : ListFolder(tree.System())) {
        names += entry.name + ' ';
    }
    EXPECT_EQ(names, "A a1 b Z _ \xC3\xA4 ");
}

TEST(WindowsFiles, NativeOperationsNeverReplaceOrLoseAFile) {
    const TestFolder tree;
    tree.Write("a", "a");
    tree.Write("b", "b");
    EXPECT_EQ(RenameToFree(PathOf(tree, "a"), PathOf(tree, "b")), std::errc::file_exists);
    EXPECT_FALSE(RenameToFree(PathOf(tree, "a"), PathOf(tree, "c")));
    EXPECT_EQ(WriteNewFile(PathOf(tree, "b"), "new"), std::errc::file_exists);
    EXPECT_FALSE(WriteNewFile(PathOf(tree, "d"), "new"));
    EXPECT_FALSE(WriteDurably(PathOf(tree, "b"), "durable"));
    EXPECT_EQ(tree.Read("b"), "durable");
    EXPECT_EQ(tree.Read("c"), "a");
    EXPECT_EQ(tree.Read("d"), "new");
    EXPECT_EQ(tree.Count(), 3);
    std::string content;
    EXPECT_EQ(ReadRegularFile(PathOf(tree, ""), 10, content), std::errc::is_a_directory);
    EXPECT_EQ(ReadRegularFile(PathOf(tree, "none"), 10, content), std::errc::no_such_file_or_directory);
    EXPECT_EQ(ReadRegularFile(PathOf(tree, "b"), 3, content), std::errc::file_too_large);
    EXPECT_FALSE(ReadRegularFile(PathOf(tree, "b"), 7, content));
    EXPECT_EQ(content, "durable");
    EXPECT_EQ(StatusOfEntry(PathOf(tree, "b"))->size, 7U);
    EXPECT_FALSE(StatusOfEntry(PathOf(tree, "none")));
    EXPECT_TRUE(IsWritableFolder(PathOf(tree, "")));
    EXPECT_EQ(tree.Count(), 3);
    EXPECT_EQ(IdentityOf(PathOf(tree, "b")), IdentityOf(PathOf(tree, "B")));
    EXPECT_TRUE(LiesIn(PathOf(tree, "b"), PathOf(tree, "")));
    EXPECT_FALSE(LiesIn(PathOf(tree, ""), PathOf(tree, "b")));
}

TEST(WindowsFiles, LockExcludesOthersUntilItEnds) {
    const TestFolder tree;
    auto first = LockFile(PathOf(tree, "lock"));
    ASSERT_TRUE(first.lock);
    EXPECT_TRUE(LockFile(PathOf(tree, "lock")).busy);
    first.lock.reset();
    EXPECT_TRUE(LockFile(PathOf(tree, "lock")).lock);
    EXPECT_TRUE(LockFile(PathOf(tree, "none/lock")).error);
    auto folder = LockFolder(PathOf(tree, ""));
    ASSERT_TRUE(folder.lock);
    EXPECT_TRUE(LockFolder(PathOf(tree, "")).busy);
    folder.lock.reset();
    EXPECT_TRUE(LockFolder(PathOf(tree, "")).lock);
    EXPECT_EQ(tree.Count(), 1) << "a lock on a folder leaves nothing in it";
}

}  // namespace
}  // namespace ventrix::platform
