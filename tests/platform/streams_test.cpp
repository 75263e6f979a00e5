#include <gtest/gtest.h>

#include "platform/drives.h"
#include "platform/environment.h"
#include "platform/file_handle.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/temp_files.h"
#include "platform/text_stream.h"
#include "support/environment.h"
#include "support/pipe.h"
#include "support/test_folder.h"

using namespace ventrix::platform;
using ventrix::test::TestFolder;

namespace {

TEST(TextStream, AppendsLinesThatEndInCrLf) {
    const TestFolder tree;
    tree.Write("log", "before\r\n");
    TextStream log(tree.System("log"));
    ASSERT_TRUE(log.IsOpen());
    log.Write("Fehler:");
    EXPECT_EQ(tree.Read("log"), "before\r\n");
    log.Write("a\nb");
    EXPECT_EQ(tree.Read("log"), "before\r\nFehler:a\r\n");
    TextStream other(tree.System("log"));
    other.EndLine();
    log.EndLine();
    EXPECT_EQ(tree.Read("log"), "before\r\nFehler:a\r\n\r\nb\r\n");
    log.Write("rest");
    other.Close();
    TextStream moved = std::move(log);
    EXPECT_EQ(RemoveFile(tree.System("log")), kErrorSharingViolation);
    moved.Close();
    EXPECT_FALSE(moved.IsOpen());
    moved.Write("dropped\n");
    EXPECT_EQ(tree.Read("log"), "before\r\nFehler:a\r\n\r\nb\r\nrest");
    EXPECT_EQ(RemoveFile(tree.System("log")), kErrorNone);
}

TEST(TextStream, StaysClosedIfThePathCannotBeOpened) {
    const TestFolder tree;
    std::vector<std::string> paths = {"", tree.System(""), tree.System("none/log")};
    const bool hasPipe = ventrix::test::MakePipe(tree.Native("pipe"));
    if (hasPipe) {
        paths.push_back(tree.System("pipe"));
    }
    for (const std::string& path : paths) {
        TextStream log(path);
        EXPECT_FALSE(log.IsOpen()) << path;
        log.Write("dropped\n");
        log.EndLine();
    }
    EXPECT_EQ(tree.Count(), hasPipe ? 1 : 0);
}

TEST(FileHandle, DispositionDecidesAboutMissingAndExistingFiles) {
    const TestFolder tree;
    const struct {
        FileAccess access;
        FileDisposition disposition;
        bool opensMissing;
        const char* contentAfter;
    } rows[] = {
        {FileAccess::kRead, FileDisposition::kOpenExisting, false, "0123456789"},
        {FileAccess::kWrite, FileDisposition::kOpenAlways, true, "0123456789"},
        {FileAccess::kReadWrite, FileDisposition::kCreateAlways, true, ""},
    };
    for (const auto& row : rows) {
        tree.Write("file", "0123456789");
        std::filesystem::remove(tree.Native("missing"));
        const FileHandle file = OpenFileHandle(tree.System("file"), row.access, row.disposition);
        EXPECT_GT(file, 0);
        EXPECT_EQ(SeekHandle(file, 0, SeekOrigin::kCurrent), 0u);
        EXPECT_EQ(tree.Read("file"), row.contentAfter);
        CloseFileHandle(file);
        const FileHandle missing = OpenFileHandle(tree.System("missing"), row.access, row.disposition);
        EXPECT_EQ(missing != 0, row.opensMissing);
        EXPECT_EQ(tree.Exists("missing"), row.opensMissing);
        CloseFileHandle(missing);
    }
    EXPECT_EQ(OpenFileHandle(tree.System(""), FileAccess::kRead, FileDisposition::kOpenExisting), 0);
}

TEST(FileHandle, ReadsWritesAndSeeks) {
    const TestFolder tree;
    const FileHandle file =
        OpenFileHandle(tree.System("f"), FileAccess::kReadWrite, FileDisposition::kCreateAlways);
    ASSERT_NE(file, 0);
    EXPECT_EQ(WriteToHandle(file, "hello world", 11), 11u);
    EXPECT_EQ(SizeOfHandle(file), 11u);
    EXPECT_EQ(SeekHandle(file, -5, SeekOrigin::kEnd), 6u);
    char buffer[8] = {};
    EXPECT_EQ(ReadFromHandle(file, buffer, 8), 5u);
    EXPECT_STREQ(buffer, "world");
    EXPECT_EQ(ReadFromHandle(file, buffer, 8), 0u);
    EXPECT_EQ(SeekHandle(file, -1, SeekOrigin::kBegin), std::nullopt);
    EXPECT_EQ(SeekHandle(file, 0, static_cast<SeekOrigin>(7)), std::nullopt);
    CloseFileHandle(file);

    char byte = 0;
    EXPECT_EQ(ReadFromHandle(0, &byte, 1), 0u);
    EXPECT_EQ(WriteToHandle(0, &byte, 1), 0u);
    EXPECT_EQ(SizeOfHandle(0), std::nullopt);
    EXPECT_EQ(SeekHandle(0, 0, SeekOrigin::kBegin), std::nullopt);
    CloseFileHandle(0);
}

TEST(TempFiles, AreNewAndEmpty) {
    const TestFolder tree;
    SetEnvironmentValue(ventrix::test::kTemporary, tree.Native(""));
    EXPECT_EQ(TempFolder(), tree.System("") + "\\");
    const std::string a = MakeTempFile(TempFolder(), "QLTX");
    const std::string b = MakeTempFile(TempFolder(), "QLT");
    ventrix::test::RemoveVariable(ventrix::test::kTemporary);
    EXPECT_NE(a, b);
    EXPECT_EQ(AttributesOf(a), 0u);
    EXPECT_EQ(a.substr(a.rfind('\\') + 1, 3), "QLT");
    EXPECT_TRUE(a.ends_with(".tmp")) << a;
    EXPECT_EQ(MakeTempFile(tree.System("none"), "QLT"), "");
}

}  // namespace
