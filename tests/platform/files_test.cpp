#include "platform/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "platform/folders.h"
#include "support/full_disk.h"
#include "support/test_folder.h"

using namespace ventrix::platform;
using ventrix::test::FullDisk;
using ventrix::test::TestFolder;
namespace fs = std::filesystem;

namespace {

std::vector<std::string> NamesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const FolderEntry& entry : ListFolder(folder)) {
        names.push_back(entry.name);
    }
    return names;
}

unsigned ModeOf(const fs::path& file) {
    return static_cast<unsigned>(fs::status(file).permissions());
}

TEST(ListFolder, OrdersEntriesAsNtfs) {
    const TestFolder tree;
    // The underscore sorts between upper-case and lower-case letters, so its place shows which of the two is
    // compared. The micro sign does not move, since its upper-case form belongs to another letter.
    for (const char* name : {"b", "A", "a_", "aB", "Z", "z1", "10", "9", "\xC3\xA4", "\xC3\x9F", "_",
                             "\xC2\xB5", "\xF0\x9F\x98\x80", "\xEF\xBC\xA1"}) {
        tree.Write(name, "");
    }
    EXPECT_EQ(NamesIn(tree.System("")),
              (std::vector<std::string>{"10", "9", "A", "aB", "a_", "b", "Z", "z1", "_", "\xC2\xB5",
                                        "\xC3\xA4", "\xC3\x9F", "\xF0\x9F\x98\x80", "\xEF\xBC\xA1"}));
}

TEST(ListFolder, ReportsTheAttributesOfEachEntry) {
    const TestFolder tree;
    tree.Write("a.txt", "x");
    tree.Write("b.txt", "x");
    tree.SetReadOnly("b.txt");
    fs::create_directory(tree.Native("dir"));
    fs::create_symlink("dir", tree.Native("link-dir"));
    fs::create_symlink("a.txt", tree.Native("link-file"));
    fs::create_symlink("nowhere", tree.Native("link-none"));
    tree.Write("back\\slash", "");
    tree.Write("latin-\xE4", "");
    std::vector<std::pair<std::string, std::uint32_t>> found;
    for (const FolderEntry& entry : ListFolder(tree.System("") + "\\")) {
        found.emplace_back(entry.name, entry.attributes);
    }
    EXPECT_EQ(found, (decltype(found){{"a.txt", 0},
                                      {"b.txt", kAttributeReadOnly},
                                      {"dir", kAttributeDirectory},
                                      {"latin-\xE4", 0},
                                      {"link-dir", kAttributeDirectory | kAttributeLink},
                                      {"link-file", kAttributeLink},
                                      {"link-none", kAttributeLink}}));
    EXPECT_TRUE(ListFolder(tree.System("missing")).empty());
    EXPECT_TRUE(ListFolder(tree.System("a.txt")).empty());
    EXPECT_TRUE(ListFolder("").empty());
}

TEST(Attributes, ReadOnlyBitIsReadAndWritten) {
    const TestFolder tree;
    tree.Write("a", "");
    fs::permissions(tree.Native("a"), fs::perms(0664));
    EXPECT_EQ(AttributesOf(tree.System("a")), 0u);
    EXPECT_EQ(SetAttributes(tree.System("a"), kAttributeReadOnly), kErrorNone);
    EXPECT_EQ(ModeOf(tree.Native("a")), 0444u);
    EXPECT_EQ(AttributesOf(tree.System("a")), kAttributeReadOnly);
    EXPECT_EQ(SetAttributes(tree.System("a"), 0x20), kErrorNone);
    EXPECT_EQ(ModeOf(tree.Native("a")), 0644u);
    EXPECT_EQ(AttributesOf(tree.System("")), kAttributeDirectory);
    EXPECT_EQ(AttributesOf(tree.System("none")), std::nullopt);
    EXPECT_EQ(AttributesOf(R"(Q:\unmapped)"), std::nullopt);
    EXPECT_EQ(SetAttributes(tree.System("none"), 0), kErrorFileNotFound);
}

TEST(Folders, AreCreatedAndRemoved) {
    const TestFolder tree;
    tree.Write("file", "x");
    EXPECT_EQ(MakeFolder(tree.System("a")), kErrorNone);
    EXPECT_EQ(MakeFolder(tree.System("a") + "\\b\\"), kErrorNone);
    EXPECT_EQ(MakeFolder(tree.System("a")), kErrorAlreadyExists);
    EXPECT_EQ(MakeFolder(tree.System("file")), kErrorAlreadyExists);
    EXPECT_EQ(MakeFolder(tree.System("x/y")), kErrorPathNotFound);
    EXPECT_EQ(MakeFolder(tree.System("file/y")), kErrorPathNotFound);
    EXPECT_EQ(MakeFolder(R"(Q:\x)"), kErrorPathNotFound);
    EXPECT_EQ(RemoveEmptyFolder(tree.System("a")), kErrorDirNotEmpty);
    EXPECT_EQ(RemoveEmptyFolder(tree.System("file")), kErrorNotADirectory);
    EXPECT_EQ(RemoveEmptyFolder(tree.System("none")), kErrorFileNotFound);
    EXPECT_EQ(RemoveEmptyFolder(tree.System("a/b") + "\\"), kErrorNone);
    fs::create_symlink("a", tree.Native("link"));
    EXPECT_EQ(RemoveEmptyFolder(tree.System("link") + "\\"), kErrorNone);
    EXPECT_TRUE(tree.Exists("a"));
    EXPECT_FALSE(tree.Exists("link"));
}

TEST(RemoveFile, RefusesFoldersAndReadOnlyFiles) {
    const TestFolder tree;
    tree.Write("plain", "x");
    tree.Write("locked", "x");
    tree.SetReadOnly("locked");
    fs::create_directory(tree.Native("dir"));
    fs::create_symlink("locked", tree.Native("link"));
    fs::create_symlink("nowhere", tree.Native("dangling"));
    EXPECT_EQ(RemoveFile(tree.System("plain")), kErrorNone);
    EXPECT_EQ(RemoveFile(tree.System("plain")), kErrorFileNotFound);
    EXPECT_EQ(RemoveFile(tree.System("none/plain")), kErrorPathNotFound);
    EXPECT_EQ(RemoveFile(tree.System("locked")), kErrorAccessDenied);
    EXPECT_EQ(RemoveFile(tree.System("dir")), kErrorAccessDenied);
    EXPECT_EQ(RemoveFile(tree.System("link")), kErrorNone);
    EXPECT_EQ(RemoveFile(tree.System("dangling")), kErrorNone);
    EXPECT_EQ(tree.Read("locked"), "x");
    EXPECT_EQ(tree.Count(), 2);
}

TEST(CopyFileOver, ReplacesAndKeepsPermissions) {
    const TestFolder tree;
    const std::string big(200000, 'q');
    tree.Write("from", big);
    fs::permissions(tree.Native("from"), fs::perms(0754));
    tree.Write("to", "old");
    fs::create_symlink("to", tree.Native("link"));
    EXPECT_EQ(CopyFileOver(tree.System("from"), tree.System("new")), kErrorNone);
    EXPECT_EQ(tree.Read("new"), big);
    EXPECT_EQ(ModeOf(tree.Native("new")) & 0700, 0700u);
    EXPECT_EQ(CopyFileOver(tree.System("from"), tree.System("link")), kErrorNone);
    EXPECT_TRUE(fs::is_symlink(tree.Native("link")));
    EXPECT_EQ(tree.Read("to"), big);
    EXPECT_EQ(tree.Count(), 4);

    tree.Write("locked", "");
    tree.SetReadOnly("locked");
    EXPECT_EQ(CopyFileOver(tree.System("locked"), tree.System("locked copy")), kErrorNone);
    EXPECT_EQ(AttributesOf(tree.System("locked copy")), kAttributeReadOnly);
}

TEST(CopyFileOver, RefusalsLeaveBothFilesUnchanged) {
    const TestFolder tree;
    tree.Write("a", "content");
    tree.Write("locked", "kept");
    tree.SetReadOnly("locked");
    fs::create_directory(tree.Native("dir"));
    ASSERT_EQ(::mkfifo(tree.Native("pipe").c_str(), 0600), 0);
    const struct {
        const char *source, *target;
        ErrorCode error;
    } rows[] = {
        {"a", "a", kErrorSharingViolation},  {"a", "locked", kErrorAccessDenied},
        {"a", "dir", kErrorAccessDenied},    {"dir", "b", kErrorAccessDenied},
        {"pipe", "b", kErrorAccessDenied},   {"none", "a", kErrorFileNotFound},
        {"none/x", "a", kErrorPathNotFound}, {"a", "none/b", kErrorPathNotFound},
        {"a", "a/b", kErrorPathNotFound},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CopyFileOver(tree.System(row.source), tree.System(row.target)), row.error)
            << row.source << " to " << row.target;
    }
    EXPECT_EQ(tree.Read("a"), "content");
    EXPECT_EQ(tree.Read("locked"), "kept");
    EXPECT_EQ(tree.Count(), 4);
}

TEST(WholeFiles, FullDiskLeavesTheOldContent) {
    const TestFolder tree;
    const std::string big(100000, 'n');
    tree.Write("big", big);
    tree.Write("target", "old");
    {
        const FullDisk full(50000);
        EXPECT_NE(WriteWholeFile(tree.System("target"), big), kErrorNone);
        EXPECT_NE(CopyFileOver(tree.System("big"), tree.System("target")), kErrorNone);
        EXPECT_NE(CopyFileOver(tree.System("big"), tree.System("new")), kErrorNone);
    }
    EXPECT_EQ(tree.Read("target"), "old");
    EXPECT_EQ(tree.Count(), 2);
}

TEST(WholeFiles, AreWrittenAndReadBack) {
    const TestFolder tree;
    const std::string bytes("a\0b\r\n\xFF", 6);
    std::string read = "kept";
    EXPECT_EQ(WriteWholeFile(tree.System("new"), bytes), kErrorNone);
    EXPECT_EQ(ReadWholeFile(tree.System("new"), read), kErrorNone);
    EXPECT_EQ(read, bytes);
    fs::permissions(tree.Native("new"), fs::perms(0666));
    EXPECT_EQ(WriteWholeFile(tree.System("new"), ""), kErrorNone);
    EXPECT_EQ(ModeOf(tree.Native("new")), 0666u);
    EXPECT_EQ(tree.Read("new"), "");
    EXPECT_EQ(ReadWholeFile(tree.System("none"), read), kErrorFileNotFound);
    EXPECT_EQ(ReadWholeFile(tree.System(""), read), kErrorAccessDenied);
    EXPECT_EQ(read, bytes);
    EXPECT_EQ(WriteWholeFile(tree.System("none/x"), bytes), kErrorPathNotFound);
    tree.SetReadOnly("new");
    EXPECT_EQ(WriteWholeFile(tree.System("new"), bytes), kErrorAccessDenied);
    EXPECT_EQ(WriteWholeFile("", bytes), kErrorPathNotFound);
    EXPECT_EQ(tree.Count(), 1);
}

TEST(WholeFiles, IncompletePiecesLeaveTheOldContent) {
    const TestFolder tree;
    tree.Write("file", "old");
    for (const bool complete : {false, true}) {
        const ErrorCode error = WriteWholeFile(tree.System("file"), [&](const PutPiece& put) {
            return put("ne") && put("") && put("w") && complete;
        });
        EXPECT_EQ(error == kErrorNone, complete);
        EXPECT_EQ(tree.Read("file"), complete ? "new" : "old");
        EXPECT_EQ(tree.Count(), 1);
    }
    const std::string half(60000, 'h');
    const FullDisk full(100000);
    EXPECT_NE(
        WriteWholeFile(tree.System("file"), [&](const PutPiece& put) { return put(half) && put(half); }),
        kErrorNone);
    EXPECT_EQ(tree.Read("file"), "new");
}

TEST(WholeFiles, OverwrittenFilesHaveTheNewContentOnly) {
    const TestFolder tree;
    for (const std::string& content : {std::string(3000000, 'l'), std::string("short"), std::string()}) {
        const auto produce = [&](const PutPiece& put) { return put(content); };
        EXPECT_EQ(OverwriteFile(tree.System("file"), produce), kErrorNone);
        EXPECT_EQ(tree.Read("file"), content);
    }
    tree.SetReadOnly("file");
    const auto produce = [](const PutPiece& put) { return put("x"); };
    EXPECT_EQ(OverwriteFile(tree.System("file"), produce), kErrorAccessDenied);
    EXPECT_EQ(OverwriteFile(tree.System(""), produce), kErrorAccessDenied);
    EXPECT_EQ(OverwriteFile(tree.System("none/x"), produce), kErrorPathNotFound);
    EXPECT_EQ(tree.Read("file"), "");
    EXPECT_EQ(tree.Count(), 1);
}

TEST(WholeFiles, OverwritingThatFailsLeavesNoPart) {
    const TestFolder tree;
    tree.Write("file", "old");
    EXPECT_NE(OverwriteFile(tree.System("file"), [](const PutPiece&) { return false; }), kErrorNone);
    EXPECT_EQ(tree.Read("file"), "old");
    EXPECT_NE(OverwriteFile(tree.System("file"), [](const PutPiece& put) { return put("n") && false; }),
              kErrorNone);
    EXPECT_EQ(tree.Read("file"), "");
    const std::string half(60000, 'h');
    const FullDisk full(100000);
    EXPECT_NE(OverwriteFile(tree.System("file"), [&](const PutPiece& put) { return put(half) && put(half); }),
              kErrorNone);
    EXPECT_EQ(tree.Read("file"), "");
}

TEST(WholeFiles, LargeFilesReleasePreallocatedSpace) {
    const TestFolder tree;
    const std::string piece(700001, 'p');
    std::string whole;
    ASSERT_EQ(WriteWholeFile(tree.System("file"),
                             [&](const PutPiece& put) {
                                 for (int i = 0; i < 5; ++i) {
                                     whole += piece;
                                     if (!put(piece)) {
                                         return false;
                                     }
                                 }
                                 return true;
                             }),
              kErrorNone);
    Bytes read;
    ASSERT_EQ(ReadWholeFile(tree.System("file"), read), kErrorNone);
    EXPECT_EQ(std::string_view(read.data(), read.size()), whole);
    struct stat found = {};
    ASSERT_EQ(::stat(tree.Native("file").c_str(), &found), 0);
    constexpr std::size_t kBlockSize = 512;  // The unit of st_blocks on every file system.
    constexpr std::size_t kSlack = 1000000;
    EXPECT_LT(static_cast<std::size_t>(found.st_blocks) * kBlockSize, whole.size() + kSlack);
}

TEST(OpensForReading, IsTrueForRegularFilesOnly) {
    const TestFolder tree;
    tree.Write("file", "");
    ASSERT_EQ(::mkfifo(tree.Native("pipe").c_str(), 0600), 0);
    EXPECT_TRUE(OpensForReading(tree.System("file")));
    for (const char* name : {"none", "pipe", "", "file/x"}) {
        EXPECT_FALSE(OpensForReading(tree.System(name))) << name;
    }
}

TEST(LongNames, WorkUpToTheLimitsOfTheSystem) {
    const TestFolder tree;
    const std::string name(250, 'n');
    std::string folder = tree.System("");
    while (folder.size() < 3000) {
        folder += "\\" + name;
        ASSERT_EQ(MakeFolder(folder), kErrorNone);
    }
    const std::string longest(255, 'm');
    EXPECT_EQ(WriteWholeFile(folder + "\\" + longest, "x"), kErrorNone);
    EXPECT_EQ(CopyFileOver(folder + "\\" + longest, folder + "\\b"), kErrorNone);
    EXPECT_EQ(NamesIn(folder), (std::vector<std::string>{"b", longest}));
    EXPECT_EQ(MakeFolder(folder + "\\" + std::string(256, 'x')), kErrorNameTooLong);
    EXPECT_EQ(MakeFolder(folder + "\\" + std::string(5000, 'x')), kErrorNameTooLong);
}

TEST(Paths, HaveALongAndAnAbsoluteForm) {
    const TestFolder tree;
    tree.Write("a.dtd", "");
    EXPECT_EQ(LongPath(tree.System("a.dtd")), tree.System("a.dtd"));
    EXPECT_EQ(LongPath(tree.System("none.dtd")), "");
    const fs::path before = fs::current_path();
    fs::current_path(tree.Native(""));
    EXPECT_EQ(AbsolutePath("sub\\..\\a.dtd"), tree.System("a.dtd"));
    fs::current_path(before);
    EXPECT_EQ(AbsolutePath("/x/y"), "Z:\\x\\y");
    EXPECT_EQ(AbsolutePath(R"(C:\x\..\y)"), R"(C:\x\..\y)");
    EXPECT_EQ(AbsolutePath(""), "");
}

}  // namespace
