#include "platform/drives.h"

#include <gtest/gtest.h>

#include "platform/environment.h"
#include "support/environment.h"

using namespace ventrix::platform;

namespace {

DriveTable Table() {
    return ParseDrives(
        R"(c=/srv/c;D:=/srv/d/;E:\=/srv/c/deep;\\server\share=/mnt/share;\\Server\=/mnt/server)");
}

struct PathRow {
    const char* name;
    const char* input;
    const char* output;
};

TEST(Drives, SystemPathsConvertToNative) {
    const PathRow rows[] = {
        {"plain", R"(C:\docs\guide.ditamap)", "/srv/c/docs/guide.ditamap"},
        {"letter without case", R"(c:\Docs\A.xml)", "/srv/c/Docs/A.xml"},
        {"slashes", "C:/docs/a.xml", "/srv/c/docs/a.xml"},
        {"mixed", R"(C:\docs/x\a.xml)", "/srv/c/docs/x/a.xml"},
        {"doubled", R"(C:\docs\\a.xml)", "/srv/c/docs/a.xml"},
        {"doubled after the drive", R"(C:\\docs)", "/srv/c/docs"},
        {"closing separator", R"(C:\docs\)", "/srv/c/docs/"},
        {"root", R"(C:\)", "/srv/c/"},
        {"drive alone", "C:", "/srv/c"},
        {"no separator after the drive", "C:docs", "/srv/c/docs"},
        {"dots", R"(C:\a\.\b\..\c)", "/srv/c/a/c"},
        {"never above the drive", R"(C:\..\..\etc\passwd)", "/srv/c/etc/passwd"},
        {"default drive", R"(Z:\home\u\a.xml)", "/home/u/a.xml"},
        {"default drive's root", R"(z:\)", "/"},
        {"unknown drive", R"(Q:\a.xml)", ""},
        {"server without case", R"(\\SERVER\pub\a.xml)", "/mnt/server/pub/a.xml"},
        {"longest root", R"(\\server\Share\a.xml)", "/mnt/share/a.xml"},
        {"share whose name has the same start", R"(\\server\shared\a.xml)", "/mnt/server/shared/a.xml"},
        {"never above the server", R"(\\server\..\..\x)", "/mnt/server/x"},
        {"unknown server", R"(\\other\a)", ""},
        {"native", "/srv//c/../x y", "/srv//c/../x y"},
        {"native with a joined name", R"(/srv/out\\sub\a.xml)", "/srv/out/sub/a.xml"},
        {"rooted", R"(\srv\c)", "/srv/c"},
        {"relative", R"(docs\a.xml)", "docs/a.xml"},
        {"relative above", R"(..\..\a\..\b)", "../../b"},
        {"here", ".", "."},
        {"leaf", "a.xml", "a.xml"},
        {"non-ASCII", "C:\\\xC3\xBC\xE2\x82\xAC.xml", "/srv/c/\xC3\xBC\xE2\x82\xAC.xml"},
        {"empty", "", ""},
    };
    for (const PathRow& row : rows) {
        EXPECT_EQ(ToNative(Table(), row.input), row.output) << row.name;
    }
}

TEST(Drives, NativePathsConvertToSystem) {
    const PathRow rows[] = {
        {"drive", "/srv/c/docs/a.xml", R"(C:\docs\a.xml)"},
        {"most specific drive", "/srv/c/deep/a.xml", R"(E:\a.xml)"},
        {"folder whose name has the same start", "/srv/cc/a.xml", R"(Z:\srv\cc\a.xml)"},
        {"the drive's folder", "/srv/c", R"(C:\)"},
        {"closing slash", "/srv/c/docs/", R"(C:\docs\)"},
        {"server", "/mnt/server/pub/a", R"(\\Server\pub\a)"},
        {"part that another root maps elsewhere", "/mnt/server/share/a", R"(Z:\mnt\server\share\a)"},
        {"root", "/", R"(Z:\)"},
        {"elsewhere", "/home/u/a.xml", R"(Z:\home\u\a.xml)"},
        {"runs and dots", "/srv//c/x/../docs/./a", R"(C:\docs\a)"},
        {"above a drive's folder", "/srv/c/../d/a", R"(D:\a)"},
        {"relative", "docs/a.xml", R"(docs\a.xml)"},
        {"empty", "", ""},
    };
    for (const PathRow& row : rows) {
        EXPECT_EQ(ToSystem(Table(), row.input), row.output) << row.name;
    }

    EXPECT_EQ(ToSystem(Table(), R"(/srv/c/a\b)"), std::nullopt);
    EXPECT_EQ(ToSystem(Table(), "a:b"), std::nullopt);
    EXPECT_EQ(ToSystem(ParseDrives("Z=/only"), "/home"), std::nullopt);
}

TEST(Drives, SystemPathsConvertBack) {
    for (const char* native :
         {"/", "/a", "/a/b/", "/srv/c", "/srv/c/deep/x", "/mnt/share/x", "/mnt/server/share/x", "/srv"}) {
        const std::optional<std::string> system = ToSystem(Table(), native);
        ASSERT_TRUE(system) << native;
        const std::string back = ToNative(Table(), *system);
        EXPECT_TRUE(back == native || back == std::string(native) + "/")
            << native << " via " << *system << " is " << back;
    }
}

TEST(Drives, TablesAreParsedAndFormatted) {
    const DriveTable expected = {{"C:\\", "/srv/c"}, {"\\\\srv\\", "/mnt/s"}, {"Z:\\", "/"}};
    EXPECT_EQ(ParseDrives(R"(c:/=/srv/c;\\srv=/mnt/s/)"), expected);
    EXPECT_EQ(ParseDrives(FormatDrives(expected)), expected);
    EXPECT_EQ(ParseDrives(""), (DriveTable{{"Z:\\", "/"}}));
    EXPECT_EQ(ParseDrives("z=/other"), (DriveTable{{"Z:\\", "/other"}}));
    EXPECT_EQ(ParseDrives("C=/one;c:=/two"), (DriveTable{{"C:\\", "/two"}, {"Z:\\", "/"}}));
    EXPECT_EQ(ParseDrives(";;C;=/x;C=;C=relative;12=/x;\\\\=/x"), (DriveTable{{"Z:\\", "/"}}));
    EXPECT_EQ(MalformedDrives(";;C;=/x;D=/d;C=relative;\\\\=/x"),
              (std::vector<std::string>{"C", "=/x", "C=relative", "\\\\=/x"}));
}

TEST(Drives, AbsoluteSystemPathsAreRecognised) {
    for (const char* path : {R"(C:\a)", "c:/a", R"(\\server\a)", R"(\\server)"}) {
        EXPECT_TRUE(IsAbsoluteSystemPath(path)) << path;
    }
    for (const char* path : {"", "C:", "C:a", R"(\a)", "/a/b", "//a", R"(a\b)", R"(\\)", R"(1:\a)"}) {
        EXPECT_FALSE(IsAbsoluteSystemPath(path)) << path;
    }
}

TEST(Drives, ProcessTableIsSeenByACopyOfTheLibrary) {
    SetProcessDrives(ParseDrives("C=/srv/c"));
    EXPECT_EQ(EnvironmentValue("VENTRIX_DRIVES"), "C:\\=/srv/c;Z:\\=/");
    EXPECT_EQ(ToNative(R"(C:\a)"), "/srv/c/a");
    SetEnvironmentValue("VENTRIX_DRIVES", "C=/elsewhere");
    EXPECT_EQ(ToNative(R"(C:\a)"), "/elsewhere/a");
    ventrix::test::RemoveVariable("VENTRIX_DRIVES");
    EXPECT_EQ(ToNative(R"(C:\a)"), "");
    EXPECT_EQ(ToSystem("/a"), R"(Z:\a)");
}

}  // namespace
