#include <iterator>
#include <random>

#include "kit/kit_environment.h"
#include "kit/last_error.h"
#include "kit/paths/file_path.h"
#include "kit/paths/portable_path.h"
#include "kit/paths/relative_path.h"
#include "kit/paths/resolve_path.h"
#include "kit/paths/rivlet.h"
#include "platform/environment.h"
#include "support/text_rows.h"

namespace ventrix::test {
namespace {

std::string Resolved(const std::string& path, const char* base) {
    char buffer[kPathBufferSize];
    Q_StrCopyN(buffer, path.c_str(), sizeof buffer);
    Q_ResolvePath(buffer, base);
    return buffer;
}

std::string Expanded(const std::string& path) {
    char buffer[kPathBufferSize];
    Q_StrCopyN(buffer, path.c_str(), sizeof buffer);
    Q_ExpandPathVariables(buffer);
    return buffer;
}

std::string UrlAsPath(std::string text) {
    Q_UrlToPath(text.data());
    return text.c_str();
}

TEST(ResolvePath, JoinsAndNormalises) {
    const struct {
        const char *path, *base, *resolved;
    } rows[] = {
        {"a\\b.xml", "C:\\out", "C:\\out\\a\\b.xml"},
        {"a\\b.xml", "C:\\out\\", "C:\\out\\a\\b.xml"},
        {"..\\a.xml", "C:\\out", "C:\\a.xml"},
        {"..\\a.xml", "C:\\", "C:\\a.xml"},
        {"a.xml", "C:", "C:\\a.xml"},
        {"D:\\a.xml", "C:\\out", "D:\\a.xml"},
        {"\\a.xml", "C:\\out", "\\a.xml"},
        {"", "C:\\out", "C:\\out"},
        {"", "", ""},
        {"a", nullptr, "a"},
        {"\\\\server\\share\\.\\a", "", "\\\\server\\share\\a"},
        {"\\\\\\server\\a", "", "\\\\server\\a"},
        {"//server/a", "", "/server/a"},  // only two backslashes at the start are kept
        {"C:\\a\\\\b\\", "", "C:\\a\\b\\"},
        {"C:/a\\b", "", "C:/a/b"},
        {"a\\b", "C:/out", "C:/out/a/b"},
        {"C:\\..\\..\\x", "", "C:\\x"},
        {"C:\\..", "", "C:\\"},
        {"C:\\a\\b\\..\\..\\x", "", "C:\\x"},
        {"C:\\a\\b\\..", "", "C:\\a"},
        {"C:\\a\\..", "", "C:"},
        {"C:\\a\\.\\.\\b\\.", "", "C:\\a\\b\\"},
        {"C:a\\..\\b", "", "C:\\b"},
        {"\\..\\x", "", "\\x"},
        {"\\a\\..\\x", "", "\\x"},
        {".\\a", "", "a"},
        {"..\\a", "", "a"},  // a relative path stays relative
        {"a\\..\\..\\b", "", "b"},
        {"C:\\...\\a.\\..b", "", "C:\\...\\a.\\..b"},
        {"C:\\Übung\\..\\Größe", "", "C:\\Größe"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Resolved(row.path, row.base), row.resolved)
            << row.path << " from " << (row.base ? row.base : "null");
    }
    EXPECT_DEATH(Q_ResolvePath(nullptr, ""), "");
}

TEST(ResolvePath, LongResultsAreCutBetweenCharacters) {
    const std::string folder = "C:\\" + std::string(4000, 'f');
    const std::string leaf = Repeated("ä", 60);
    const std::string resolved = Resolved(leaf, folder.c_str());
    EXPECT_EQ(resolved.size(), 4094u);  // 4003 and a separator, then whole characters of two bytes
    EXPECT_EQ(resolved.substr(4004), leaf.substr(0, 90));
}

TEST(ResolvePath, ExpandsVariables) {
    platform::SetEnvironmentValue("KIT_PATH", "C:\\kit");
    platform::SetEnvironmentValue("KIT_LONG", std::string(5000, 'k'));
    const TextRow rows[] = {
        {"$KIT_PATH\\a", "C:\\kit\\a"},
        {"$KIT_PATH", "C:\\kit"},
        {"x\\$KIT_PATH/a", "x\\C:\\kit/a"},
        {"$NOSUCHVAR\\a", "$NOSUCHVAR\\a"},
        {"$\\a", "$\\a"},
        {"a$.KIT\\b", "a$.KIT\\b"},
        {"$$KIT_PATH\\a", "$C:\\kit\\a"},
        {"~\\a", "\\a"},
        {"~", ""},
        {"~abc", "abc"},
        {"a~\\b", "a~\\b"},
        {"$.\\a", "$.\\a"},
    };
    ExpectRows(rows, Expanded);
    EXPECT_EQ(Expanded("$KIT_LONG"), std::string(4095, 'k'));
    EXPECT_EQ(Resolved("$KIT_PATH\\a", "D:\\out"), "C:\\kit\\a");
    Q_SetHomeFolder("C:\\home");
    EXPECT_EQ(Expanded("~\\a"), "C:\\home\\a");
    EXPECT_EQ(Expanded("~"), "C:\\home");
    Q_SetHomeFolder(nullptr);
    EXPECT_EQ(Expanded("~/a"), "/a");
}

TEST(RelativePath, IsRelativeToTheFolderOfTheBase) {
    const struct {
        const char *path, *base, *relative;
    } rows[] = {
        {"C:\\a\\b\\x.xml", "C:\\a\\c\\y.xml", "..\\b\\x.xml"},
        {"C:\\a\\b\\x.xml", "C:\\a\\b\\y.xml", "x.xml"},
        {"C:\\a\\b\\x.xml", "c:\\A\\B\\", "x.xml"},
        {"C:\\a\\b\\c\\x.xml", "C:\\a\\y.xml", "b\\c\\x.xml"},
        {"C:\\x.xml", "C:\\y.xml", "x.xml"},
        {"c:\\x.xml", "C:\\y.xml", "x.xml"},
        {"C:\\a\\x.xml", "C:\\y.xml", "a\\x.xml"},
        {"C:\\x.xml", "C:\\a\\b\\y.xml", "..\\..\\x.xml"},
        {"C:\\a\\bc\\x.xml", "C:\\a\\b\\y.xml", "..\\bc\\x.xml"},
        {"C:\\a\\b\\x.xml", "C:\\a\\bc\\y.xml", "..\\b\\x.xml"},
        {"C:\\a\\b", "C:\\a\\b\\c\\y.xml", "..\\..\\b"},
        {"C:\\a\\b", "C:\\a\\b\\y.xml", "..\\b"},
        {"C:\\a\\b/x.xml", "C:\\a\\b\\y.xml", "x.xml"},
        {"\\\\server\\share\\a\\x.xml", "\\\\server\\share\\b\\y.xml", "..\\a\\x.xml"},
        // No common root: nothing changes.
        {"D:\\x.xml", "C:\\y.xml", "D:\\x.xml"},
        {"\\\\one\\share\\x.xml", "\\\\other\\share\\y.xml", "\\\\one\\share\\x.xml"},
        {"\\a\\x.xml", "\\b\\y.xml", "\\a\\x.xml"},
        {"C:/a/x.xml", "C:\\a\\y.xml", "C:/a/x.xml"},
        {"C:a\\x.xml", "C:b\\y.xml", "C:a\\x.xml"},
        {"C:x.xml", "C:y.xml", "x.xml"},
        {"C:", "C:\\y.xml", ""},
        {"a\\x.xml", "C:\\a\\y.xml", "a\\x.xml"},
        {"C:\\a\\x.xml", "a\\y.xml", "C:\\a\\x.xml"},
        {"C:\\a\\x.xml", "", "C:\\a\\x.xml"},
        {"C:\\x.xml", "http://host/a/y.xml", "C:\\x.xml"},
        {"http://host/a/x.xml", "C:\\y.xml", "http://host/a/x.xml"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(RelativeTo(row.path, row.base), row.relative) << row.path << " from " << row.base;
    }
    char path[kPathBufferSize] = "C:\\a";
    MakePathRelative(path, nullptr);
    EXPECT_STREQ(path, "C:\\a");
    EXPECT_DEATH(MakePathRelative(nullptr, "C:\\a"), "");
}

std::string RandomFolder(std::mt19937& random) {
    constexpr const char* kNames[] = {"a", "ab", "b", "B", "ä", "a b", "abc"};
    std::string folder = "C:\\";
    for (auto left = random() % 5; left > 0; --left) {
        folder += std::string(kNames[random() % std::size(kNames)]) + "\\";
    }
    return folder;
}

// Joining the relative path to the folder it was made for has to give the path again.
TEST(RelativePath, JoinedToTheFolderGivesThePathAgain) {
    std::mt19937 random(5);
    for (int round = 0; round < 20000; ++round) {
        const std::string folder = RandomFolder(random);
        const std::string path = RandomFolder(random) + "file";
        const std::string relative = RelativeTo(path, folder + "base.xml");
        ASSERT_FALSE(Q_IsAbsolutePath(relative.c_str())) << path << " from " << folder;
        ASSERT_TRUE(Q_StrIEqual(JoinPath(folder, relative).c_str(), path.c_str()))
            << path << " from " << folder;
        const std::string portable = Take(Q_NativeToPortable(path.c_str(), nullptr));
        ASSERT_EQ(Take(Q_PortableToNative(portable.c_str())), path);
    }
}

TEST(RelativePath, ResultsThatDoNotFitChangeNothing) {
    const std::string deep = "C:\\" + Repeated("d\\", 1364);
    EXPECT_EQ(RelativeTo("C:\\", deep), Repeated("..\\", 1364));
    EXPECT_EQ(RelativeTo("C:\\", deep + "d\\"), "C:\\");
    const std::string wide = "C:\\" + std::string(4080, 'x');
    EXPECT_EQ(RelativeTo(wide, "C:\\a\\b\\c\\d\\e\\f\\g\\"), wide);
    EXPECT_EQ(RelativeTo(std::string(5000, 'x'), "C:\\a\\"), std::string(4094, 'x'));
}

TEST(RelativePath, UrlBecomesAPath) {
    EXPECT_EQ(UrlAsPath("../a/b%20c%2fd.xml"), "..\\a\\b c/d.xml");
    EXPECT_EQ(UrlAsPath("%C3%a4%00%G1%4"), "ä%00%G1%4");
    EXPECT_EQ(UrlAsPath("%41%"), "A%");
}

TEST(PortablePath, ConvertsBothWays) {
    const TextRow rows[] = {
        {"C:\\a\\..\\b", "<v>C:<c>a<u><c>b"},
        {"\\a\\b", "<r><c>a<c>b"},
        {"..\\a", "<u><c>a"},
        {"a b\\c", "<c>a b<c>c"},
        {"a<b>\\c", "<c>a\\<b><c>c"},
        {"\\\\server\\share\\a", "<r><c><c>server<c>share<c>a"},
        {"http://host/a", "http://host/a"},
        {"C:", "<v>C:"},
    };
    for (const TextRow& row : rows) {
        EXPECT_EQ(Take(Q_NativeToPortable(row.input.c_str(), nullptr)), row.output);
        EXPECT_EQ(Take(Q_PortableToNative(row.output.c_str())), row.input);
    }
    EXPECT_EQ(Take(Q_NativeToPortable("C:\\a\\.\\b\\", nullptr)), "<v>C:<c>a<c>b");
    EXPECT_EQ(Take(Q_NativeToPortable("C:\\a\\x", "C:\\b\\y")), "<u><c>a<c>x");
    EXPECT_EQ(Take(Q_NativeToPortable(("C:\\" + std::string(1025, 'x')).c_str(), nullptr)), "(null)");
    EXPECT_EQ(Q_NativeToPortable(nullptr, nullptr), nullptr);
}

TEST(PortablePath, InvalidTokensAreSkippedOrRefused) {
    const TextRow rows[] = {
        {"<h>server<c>share", "\\server\\share"},
        {"<v>C:<r><c>a", "C:\\a"},
        {"<x>junk<c>a<zz>", "a"},
        {"junk<c>a", "a"},
        {"<c>a\\\\b", "a\\b"},
        {"<c>a<", "a"},
        {"<r>", "(null)"},
        {"", "(null)"},
        {"<x>", "(null)"},
        {"<c>a<r>", "(null)"},
        {"<c>a<v>C:", "(null)"},
        {"<c>a<h>s", "(null)"},
        {"<r><u>", "(null)"},
    };
    ExpectRows(rows, [](const std::string& portable) { return Take(Q_PortableToNative(portable.c_str())); });
    EXPECT_EQ(Take(Q_PortableToNative(("<c>" + std::string(4096, 'x')).c_str())), "(null)");
}

TEST(FilePath, IsWrittenInEveryNotation) {
    FilePath* folder = Q_PathToFilePath("C:\\out", nullptr, kNativePath);
    FilePath* path = Q_PathToFilePath("a\\.\\b.xml", folder, kSlashPath);
    ASSERT_NE(path, nullptr);
    EXPECT_EQ(path->magic, 0x70617468u);
    EXPECT_EQ(path->flags, 16);
    EXPECT_EQ(Take(Q_FilePathToPath(path, kNativePath)), "C:\\out\\a\\b.xml");
    EXPECT_EQ(Take(Q_FilePathToPath(path, kPlainPath)), "C:\\out\\a\\b.xml");
    EXPECT_EQ(Take(Q_FilePathToPath(path, kSlashPath)), "C:/out/a/b.xml");
    EXPECT_EQ(Take(Q_FilePathToPath(path, kPortablePath)), "<v>C:<c>out<c>a<c>b.xml");
    path->magic = 0;
    EXPECT_EQ(Q_FilePathToPath(path, kPortablePath), nullptr);
    EXPECT_EQ(Q_FreeFilePath(path), 0);
    EXPECT_EQ(Q_FreeFilePath(folder), 0);
    EXPECT_EQ(Q_FreeFilePath(nullptr), 0);

    FilePath* portable = Q_PathToFilePath("<v>C:<c>a<u><c>b", nullptr, kPortablePath);
    EXPECT_EQ(Take(Q_FilePathToPath(portable, kNativePath)), "C:\\b");
    Q_FreeFilePath(portable);
}

TEST(FilePath, InvalidInputGivesNull) {
    EXPECT_EQ(Q_PathToFilePath(nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(Q_PathToFilePath("", nullptr, 99), nullptr);
    EXPECT_EQ(Q_PathToFilePath("a", nullptr, 3), nullptr);
    EXPECT_EQ(Q_PathToFilePath("<r>", nullptr, 1), nullptr);
    EXPECT_EQ(Q_PathToFilePath("..", nullptr, 0), nullptr);
    EXPECT_EQ(Q_PathToFilePath(std::string(4096, 'x').c_str(), nullptr, 0), nullptr);
    EXPECT_DEATH(Q_PathToFilePath("a", nullptr, 5), "");

    Q_ApiLastError = 0;
    EXPECT_EQ(Q_FilePathToPath(nullptr, 0), nullptr);
    EXPECT_EQ(Q_ApiLastError, -43);
    Q_ApiLastError = 0;
    FilePath* path = Q_PathToFilePath("a", nullptr, 0);
    EXPECT_EQ(Q_FilePathToPath(path, 3), nullptr);
    EXPECT_EQ(Q_ApiLastError, -43);
    Q_FreeFilePath(path);
}

TEST(FilePath, KindAndLeafAreFoundInTheText) {
    const struct {
        const char* text;
        bool isAbsolute, isDctm, isLocal;
        const char* leaf;
    } rows[] = {
        {"C:\\a\\b.xml", true, false, true, "b.xml"},
        {"C:b.xml", true, false, true, "b.xml"},
        {"a/b.xml", false, false, true, "a/b.xml"},
        {"/a", true, false, true, "/a"},
        {"", false, false, true, ""},
        {"dctm://a", true, true, true, "//a"},
        {"DCTM://a", false, false, true, "//a"},
        {"HTTPS://host/a", true, false, false, "//host/a"},
        {"ftp://host", true, false, false, "//host"},
        {"http:/host", false, false, true, "/host"},
        {"xhttp://host", false, false, true, "//host"},
        {"file:///a", false, false, true, "///a"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Q_IsAbsolutePath(row.text), row.isAbsolute) << row.text;
        EXPECT_EQ(Q_IsDctmPath(row.text), row.isDctm) << row.text;
        EXPECT_EQ(Q_IsLocalPath(row.text), row.isLocal) << row.text;
        EXPECT_STREQ(Q_LeafOf(row.text), row.leaf);
    }
    EXPECT_TRUE(Q_IsLocalPath(nullptr));
    EXPECT_FALSE(Q_IsDctmPath(nullptr));
    EXPECT_EQ(Q_LeafOf(nullptr), nullptr);
}

TEST(FilePath, JoinsAFolderAndARelativePath) {
    EXPECT_EQ(JoinPath("C:\\out", "a\\b.xml"), "C:\\out\\a\\b.xml");
    EXPECT_EQ(JoinPath("C:\\out\\", "..\\..\\a.xml"), "C:\\a.xml");
    EXPECT_EQ(JoinPath("C:\\out", "D:\\a.xml"), "D:\\a.xml");
    EXPECT_EQ(JoinPath("C:\\out", ""), "");
    EXPECT_EQ(JoinPath("", "..\\a"), "a");
    // Without the network-file library no URL can be formed.
    EXPECT_EQ(JoinPath("http://host/a", "b.xml"), "");
}

}  // namespace
}  // namespace ventrix::test
