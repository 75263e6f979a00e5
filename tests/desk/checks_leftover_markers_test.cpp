#include "desk/checks/leftover_markers.h"

#include "desk/command_line.h"
#include "desk/folder_fixture.h"
#include "desk/xml/encodings.h"
#include "support/links.h"

namespace ventrix::desk {
namespace {

using LeftoverMarkers = FolderFixture;

constexpr char kGroup[] = "QL_STARTaudienceQL_EQexpertQL_TARGETQL_SEPQL_END";

TEST_F(LeftoverMarkers, AreTakenOutOfEveryTextFile) {
    const std::string group = kGroup;
    Write("r/p.html", "<a title='" + group + "Next' data-twtags='aQL_SEPbQL_SEP'><!--" + group + "c--></a>");
    Write("r/sub/search.js",
          "x = \"" + group + "QL_ELEM_S\\u0026lt;b\\u0026gt;OK\\u0026lt;/b\\u0026gt;QL_ELEM_E\"");
    Write("r/noextension", group);
    Write("r/cut.html", "<a title='QL_STARTaud'>" + group + "</a>");
    Write("r/image", std::string("\0", 1) + group);
    test::MakeLink(Write("outside.txt", group), Native("r/link"));
    CleanedFiles cleaned;
    CleanFiles({Native("r")}, cleaned);
    EXPECT_EQ(Read("r/p.html"), "<a title='Next' data-twtags='aQL_SEPbQL_SEP'><!--c--></a>");
    EXPECT_EQ(Read("r/sub/search.js"), "x = \"OK\"");
    EXPECT_EQ(Read("r/noextension"), "");
    EXPECT_EQ(Read("r/cut.html"), "<a title='QL_STARTaud'></a>");
    EXPECT_EQ(Read("r/image"), std::string("\0", 1) + group);
    EXPECT_EQ(Read("outside.txt"), group) << "a link leads out of the result";
    EXPECT_EQ(cleaned.groups, 6U);
    EXPECT_EQ(cleaned.files.size(), 4U);
    ASSERT_EQ(cleaned.findings.size(), 1U);
    EXPECT_EQ(cleaned.findings.front().file.utf8, Native("r/cut.html"));
}

TEST_F(LeftoverMarkers, Utf16IsCleanedOrNamed) {
    const std::string text = std::string("\u00e4 ") + kGroup + "QL_ELEM_S&lt;b&gt;\u20ac&lt;/b&gt;QL_ELEM_E";
    const std::string little = "\xFF\xFE", big = "\xFE\xFF";
    const auto wide = [](const std::string& narrow, const char* encoding) {
        return FromUtf8(narrow, encoding).value_or("");
    };
    const struct {
        const char* what;
        std::string content, cleaned;
    } rows[] = {
        {"little-endian", little + wide(text, "UTF-16LE"), little + wide("\u00e4 \u20ac", "UTF-16LE")},
        {"big-endian", big + wide(text, "UTF-16BE"), big + wide("\u00e4 \u20ac", "UTF-16BE")},
        {"without a mark", wide(text, "UTF-16LE"), ""},
        {"cut", little + wide(text, "UTF-16LE") + "x", ""},
    };
    for (const auto& row : rows) {
        Write("u.txt", row.content);
        CleanedFiles cleaned;
        CleanFiles({Native("u.txt")}, cleaned);
        const bool isCleaned = !row.cleaned.empty();
        EXPECT_EQ(Read("u.txt"), isCleaned ? row.cleaned : row.content) << row.what;
        EXPECT_EQ(cleaned.groups, isCleaned ? 2U : 0U) << row.what;
        EXPECT_EQ(cleaned.findings.size(), isCleaned ? 0U : 1U) << row.what;
    }
}

TEST_F(LeftoverMarkers, AnUnwritableFileIsNamed) {
    Write("p.html", kGroup);
    SetReadOnly("p.html");
    CleanedFiles cleaned;
    CleanFiles({Native("p.html")}, cleaned);
    EXPECT_EQ(Read("p.html"), kGroup);
    ASSERT_EQ(cleaned.findings.size(), 1U);
    EXPECT_EQ(cleaned.findings.front().code, "not-cleaned");
}

TEST_F(LeftoverMarkers, ASourceWithAMarkerWordTurnsCleaningOff) {
    Write("s.xsl",
          "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
          "<xsl:output method='html'/><xsl:template match='/'><html><body title='{.}'>"
          "<xsl:value-of select='.'/></body></html></xsl:template></xsl:stylesheet>");
    Write("d.xml", "<d a='v'>QL_EQ word</d>");
    const std::vector<std::string> arguments{"publish", "d.xml", "-o",           "out",
                                             "--xslt",  "s.xsl", "--attributes", "a"};
    const test::Finished marked = test::RunVentrix(*this, arguments);
    EXPECT_EQ(marked.status, 1);
    EXPECT_NE(marked.error.find("d.xml: contains a marker word"), std::string::npos) << marked.error;
    EXPECT_NE(Read("out/d.html").find("title=\"QL_START"), std::string::npos) << Read("out/d.html");
    Write("d.xml", "<d a='v'>plain word</d>");
    const test::Finished clean = test::RunVentrix(*this, arguments);
    EXPECT_EQ(clean.status, 0) << clean.error;
    EXPECT_NE(Read("out/d.html").find("title=\"plain word\""), std::string::npos) << Read("out/d.html");
}

}  // namespace
}  // namespace ventrix::desk
