#include "platform/files.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>

#include "support/test_folder.h"

using namespace ventrix::platform;
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

/// Makes every file of this process full at `bytes`, for as long as it lives.
class FullDisk {
  public:
    explicit FullDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small = {bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &before_); }

  private:
    rlimit before_ = {};
};

TEST(ListFolder, OrdersAsNtfs) {
    const TestFolder tree;
    // The underscore stands between capital and small letters, which tells upper-casing from lower-casing.
    // The micro sign stays where it is, since its capital is that of another letter.
    for (const char* name : {"b", "A", "a_", "aB", "Z", "z1", "10", "9", "\xC3\xA4", "\xC3\x9F", "_",
                             "\xC2\xB5", "\xF0\x9F\x98\x80", "\xEF\xBC\xA1"}) {
        tree.Write(name, "");
    }
    EXPECT_EQ(NamesIn(tree.System("")),
              (std::vector<std::string>{"10", "9", "A", "aB", "a_", "b", "Z", "z1", "_", "\xC2\xB5",
                                        "\xC3\xA4", "\xC3\x9F", "\xF0\x9F\x98\x80", "\xEF\xBC\xA1"}));
}

TEST(ListFolder, TellsWhatEachEntryIs) {
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
                                      {"b.txt", attributeReadOnly},
                                      {"dir", attributeDirectory},
                                      {"latin-\xE4", 0},
                                      {"link-dir", attributeDirectory | attributeLink},
                                      {"link-file", attributeLink},
                                      {"link-none", attributeLink}}));
    EXPECT_TRUE(ListFolder(tree.System("missing")).empty());
    EXPECT_TRUE(ListFolder(tree.System("a.txt")).empty());
    EXPECT_TRUE(ListFolder("").empty());
}

TEST(Attributes, ReadAndWriteTheReadOnlyBit) {
    const TestFolder tree;
    tree.Write("a", "");
    fs::permissions(tree.Native("a"), fs::perms(0664));
    EXPECT_EQ(AttributesOf(tree.System("a")), 0u);
    EXPECT_EQ(SetAttributes(tree.System("a"), attributeReadOnly), errorNone);
    EXPECT_EQ(ModeOf(tree.Native("a")), 0444u);
    EXPECT_EQ(AttributesOf(tree.System("a")), attributeReadOnly);
    EXPECT_EQ(SetAttributes(tree.System("a"), 0x20), errorNone);
    EXPECT_EQ(ModeOf(tree.Native("a")), 0644u);
    EXPECT_EQ(AttributesOf(tree.System("")), attributeDirectory);
    EXPECT_EQ(AttributesOf(tree.System("none")), std::nullopt);
    EXPECT_EQ(AttributesOf(R"(Q:\unmapped)"), std::nullopt);
    EXPECT_EQ(SetAttributes(tree.System("none"), 0), errorFileNotFound);
}

TEST(Folders, CreateAndRemove) {
    const TestFolder tree;
    tree.Write("file", "x");
    EXPECT_EQ(MakeFolder(tree.System("a")), errorNone);
    EXPECT_EQ(MakeFolder(tree.System("a") + "\\b\\"), errorNone);
    EXPECT_EQ(MakeFolder(tree.System("a")), errorAlreadyExists);
    EXPECT_EQ(MakeFolder(tree.System("file")), errorAlreadyExists);
    EXPECT_EQ(MakeFolder(tree.System("x/y")), errorPathNotFound);
    EXPECT_EQ(MakeFolder(tree.System("file/y")), errorPathNotFound);
    EXPECT_EQ(MakeFolder(R"(Q:\x)"), errorPathNotFound);
    EXPECT_EQ(RemoveEmptyFolder(tree.System("a")), errorDirNotEmpty);
    EXPECT_EQ(RemoveEmptyFolder(tree.System("file")), errorNotADirectory);
    EXPECT_EQ(RemoveEmptyFolder(tree.System("none")), errorFileNotFound);
    EXPECT_EQ(RemoveEmptyFolder(tree.System("a/b") + "\\"), errorNone);
    fs::create_symlink("a", tree.Native("link"));
    EXPECT_EQ(RemoveEmptyFolder(tree.System("link") + "\\"), errorNone);
    EXPECT_TRUE(tree.Exists("a"));
    EXPECT_FALSE(tree.Exists("link"));
}

TEST(RemoveFile, RefusesWhatThePlatformRefuses) {
    const TestFolder tree;
    tree.Write("plain", "x");
    tree.Write("locked", "x");
    tree.SetReadOnly("locked");
    fs::create_directory(tree.Native("dir"));
    fs::create_symlink("locked", tree.Native("link"));
    fs::create_symlink("nowhere", tree.Native("dangling"));
    EXPECT_EQ(RemoveFile(tree.System("plain")), errorNone);
    EXPECT_EQ(RemoveFile(tree.System("plain")), errorFileNotFound);
    EXPECT_EQ(RemoveFile(tree.System("none/plain")), errorPathNotFound);
    EXPECT_EQ(RemoveFile(tree.System("locked")), errorAccessDenied);
    EXPECT_EQ(RemoveFile(tree.System("dir")), errorAccessDenied);
    EXPECT_EQ(RemoveFile(tree.System("link")), errorNone);
    EXPECT_EQ(RemoveFile(tree.System("dangling")), errorNone);
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
    EXPECT_EQ(CopyFileOver(tree.System("from"), tree.System("new")), errorNone);
    EXPECT_EQ(tree.Read("new"), big);
    EXPECT_EQ(ModeOf(tree.Native("new")) & 0700, 0700u);
    EXPECT_EQ(CopyFileOver(tree.System("from"), tree.System("link")), errorNone);
    EXPECT_TRUE(fs::is_symlink(tree.Native("link")));
    EXPECT_EQ(tree.Read("to"), big);
    EXPECT_EQ(tree.Count(), 4);

    tree.Write("locked", "");
    tree.SetReadOnly("locked");
    EXPECT_EQ(CopyFileOver(tree.System("locked"), tree.System("locked copy")), errorNone);
    EXPECT_EQ(AttributesOf(tree.System("locked copy")), attributeReadOnly);
}

TEST(CopyFileOver, RefusesWithoutHarm) {
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
        {"a", "a", errorSharingViolation},  {"a", "locked", errorAccessDenied},
        {"a", "dir", errorAccessDenied},    {"dir", "b", errorAccessDenied},
        {"pipe", "b", errorAccessDenied},   {"none", "a", errorFileNotFound},
        {"none/x", "a", errorPathNotFound}, {"a", "none/b", errorPathNotFound},
        {"a", "a/b", errorPathNotFound},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CopyFileOver(tree.System(row.source), tree.System(row.target)), row.error)
            << row.source << " to " << row.target;
    }
    EXPECT_EQ(tree.Read("a"), "content");
    EXPECT_EQ(tree.Read("locked"), "kept");
    EXPECT_EQ(tree.Count(), 4);
}

TEST(WholeFiles, AFullDiskLeavesTheOldContent) {
    const TestFolder tree;
    const std::string big(100000, 'n');
    tree.Write("big", big);
    tree.Write("target", "old");
    {
        const FullDisk full(50000);
        EXPECT_NE(WriteWholeFile(tree.System("target"), big), errorNone);
        EXPECT_NE(CopyFileOver(tree.System("big"), tree.System("target")), errorNone);
        EXPECT_NE(CopyFileOver(tree.System("big"), tree.System("new")), errorNone);
    }
    EXPECT_EQ(tree.Read("target"), "old");
    EXPECT_EQ(tree.Count(), 2);
}

TEST(WholeFiles, WriteAndRead) {
    const TestFolder tree;
    const std::string bytes("a\0b\r\n\xFF", 6);
    std::string read = "kept";
    EXPECT_EQ(WriteWholeFile(tree.System("new"), bytes), errorNone);
    EXPECT_EQ(ReadWholeFile(tree.System("new"), read), errorNone);
    EXPECT_EQ(read, bytes);
    fs::permissions(tree.Native("new"), fs::perms(0666));
    EXPECT_EQ(WriteWholeFile(tree.System("new"), ""), errorNone);
    EXPECT_EQ(ModeOf(tree.Native("new")), 0666u);
    EXPECT_EQ(tree.Read("new"), "");
    EXPECT_EQ(ReadWholeFile(tree.System("none"), read), errorFileNotFound);
    EXPECT_EQ(ReadWholeFile(tree.System(""), read), errorAccessDenied);
    EXPECT_EQ(read, bytes);
    EXPECT_EQ(WriteWholeFile(tree.System("none/x"), bytes), errorPathNotFound);
    tree.SetReadOnly("new");
    EXPECT_EQ(WriteWholeFile(tree.System("new"), bytes), errorAccessDenied);
    EXPECT_EQ(WriteWholeFile("", bytes), errorPathNotFound);
    EXPECT_EQ(tree.Count(), 1);
}

TEST(WholeFiles, ComeInPiecesOrStayAsTheyWere) {
    const TestFolder tree;
    tree.Write("file", "old");
    for (const bool complete : {false, true}) {
        const ErrorCode error = WriteWholeFile(tree.System("file"), [&](const PutPiece& put) {
            return put("ne") && put("") && put("w") && complete;
        });
        EXPECT_EQ(error == errorNone, complete);
        EXPECT_EQ(tree.Read("file"), complete ? "new" : "old");
        EXPECT_EQ(tree.Count(), 1);
    }
    const std::string half(60000, 'h');
    const FullDisk full(100000);
    EXPECT_NE(
        WriteWholeFile(tree.System("file"), [&](const PutPiece& put) { return put(half) && put(half); }),
        errorNone);
    EXPECT_EQ(tree.Read("file"), "new");
}

TEST(WholeFiles, LargeOnesTakeNoMoreRoomThanTheyNeed) {
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
              errorNone);
    Bytes read;
    ASSERT_EQ(ReadWholeFile(tree.System("file"), read), errorNone);
    EXPECT_EQ(std::string_view(read.data(), read.size()), whole);
    struct stat found = {};
    ASSERT_EQ(::stat(tree.Native("file").c_str(), &found), 0);
    constexpr std::size_t blockSize = 512;  // Of this count, whatever the file system's own is.
    constexpr std::size_t slack = 1000000;
    EXPECT_LT(static_cast<std::size_t>(found.st_blocks) * blockSize, whole.size() + slack);
}

TEST(OpensForReading, OnlyFiles) {
    const TestFolder tree;
    tree.Write("file", "");
    ASSERT_EQ(::mkfifo(tree.Native("pipe").c_str(), 0600), 0);
    EXPECT_TRUE(OpensForReading(tree.System("file")));
    for (const char* name : {"none", "pipe", "", "file/x"}) {
        EXPECT_FALSE(OpensForReading(tree.System(name))) << name;
    }
}

TEST(LongNames, ReachTheMachinesLimitsAndNoFurther) {
    const TestFolder tree;
    const std::string name(250, 'n');
    std::string folder = tree.System("");
    while (folder.size() < 3000) {
        folder += "\\" + name;
        ASSERT_EQ(MakeFolder(folder), errorNone);
    }
    const std::string longest(255, 'm');
    EXPECT_EQ(WriteWholeFile(folder + "\\" + longest, "x"), errorNone);
    EXPECT_EQ(CopyFileOver(folder + "\\" + longest, folder + "\\b"), errorNone);
    EXPECT_EQ(NamesIn(folder), (std::vector<std::string>{"b", longest}));
    EXPECT_EQ(MakeFolder(folder + "\\" + std::string(256, 'x')), errorNameTooLong);
    EXPECT_EQ(MakeFolder(folder + "\\" + std::string(5000, 'x')), errorNameTooLong);
}

TEST(Paths, LongFormAndAbsoluteForm) {
    const TestFolder tree;
    tree.Write("a.dtd", "");
    EXPECT_EQ(LongPath(tree.System("a.dtd")), tree.System("a.dtd"));
    EXPECT_EQ(LongPath(tree.System("none.dtd")), "");
    const fs::path before = fs::current_path();
    fs::current_path(tree.Native(""));
    EXPECT_EQ(CurrentFolder(), tree.System(""));
    EXPECT_EQ(AbsolutePath("sub\\..\\a.dtd"), tree.System("a.dtd"));
    fs::current_path(before);
    EXPECT_EQ(AbsolutePath("/x/y"), "Z:\\x\\y");
    EXPECT_EQ(AbsolutePath(R"(C:\x\..\y)"), R"(C:\x\..\y)");
    EXPECT_EQ(AbsolutePath(""), "");
}

}  // namespace
