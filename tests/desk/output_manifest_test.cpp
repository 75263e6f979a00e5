#include "desk/output/manifest.h"

#include "desk/output/entries.h"
#include "output_fixture.h"
#include "support/links.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

using ManifestFile = OutputFixture;

TEST_F(ManifestFile, ListedEntriesAreKnownUntilTheyAreEdited) {
    std::vector<std::string> names = {"a.html", "sub/b c.html", "sub/\xC3\xA4.html"};
    if (test::kHasAnyNames) {
        names.emplace_back("bad\xFF.html");
    }
    for (const std::string& name : names) {
        Write("out/" + name, "page");
    }
    test::MakeLink("a.html", Native("out/link"));
    Manifest written;
    written.mark = kResultMark;
    written.request = "Publish \xFF";
    std::vector<std::string> findings;
    ListFiles(Native("out"), written, findings);
    ASSERT_FALSE(WriteManifest(Native("out"), written));
    EXPECT_TRUE(findings.empty());

    const Manifest manifest = ReadManifest(Native("out"), kResultMark);
    EXPECT_TRUE(manifest.readable);
    EXPECT_TRUE(IsUnmodified(manifest, Native("out"), kResultMark));
    EXPECT_EQ(IsUnmodified(manifest, Native("out"), "link"), test::kHasLinks);
    EXPECT_TRUE(IsUnmodified(manifest, Native("out"), "sub"));
    for (const std::string& name : names) {
        EXPECT_TRUE(IsUnmodified(manifest, Native("out"), platform::PathFromUtf8(name))) << name;
    }
    Write("out/a.html", "other");
    fs::last_write_time(Native("out/sub/b c.html"), fs::file_time_type::clock::now() + std::chrono::hours(1));
    Write("out/new.html", "page");
    for (const char* name : {"a.html", "sub/b c.html", "new.html", "missing.html"}) {
        EXPECT_FALSE(IsUnmodified(manifest, Native("out"), name)) << name;
    }
}

TEST_F(ManifestFile, DamagedOrForeignMarksListNothing) {
    const char* const contents[] = {
        "notes of mine",
        "[]",
        R"({"schema":1})",
        R"({"schema":2,"request":"","version":"","files":[],"folders":[]})",
        R"({"schema":1,"request":"","version":"","files":[{"name":7}],"folders":[]})",
        R"({"schema":1,"request":"","version":"","files":[{"name":"a","size":"1","modified":1}],"folders":[]})",
        R"({"schema":1,"request":"","version":"","files":[],"fold)",
    };
    for (const char* content : contents) {
        Write(std::string("out/") + kResultMark, content);
        const Manifest manifest = ReadManifest(Native("out"), kResultMark);
        EXPECT_FALSE(manifest.readable) << content;
        EXPECT_FALSE(IsUnmodified(manifest, Native("out"), kResultMark)) << content;
    }
}

TEST(EntryNames, LongNamesAreCutBetweenCharacters) {
    EXPECT_EQ(NumberedName("a.html", ".kept", 1), "a.html.kept");
    EXPECT_EQ(NumberedName("a.html", ".kept", 2), "a.html.kept.2");
    std::string umlauts;
    for (int count = 0; count < 127; ++count) {
        umlauts += "\xC3\xA4";
    }
    EXPECT_EQ(NumberedName(umlauts, ".kept", 1), umlauts.substr(0, 250) + ".kept");
    EXPECT_EQ(NumberedName(umlauts, ".kept", 12), umlauts.substr(0, 246) + ".kept.12");
}

}  // namespace
}  // namespace ventrix::desk
