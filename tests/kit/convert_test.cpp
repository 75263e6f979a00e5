#include "kit/text/convert.h"

#include <cstring>

#include "kit/kit_environment.h"
#include "support/text_rows.h"

namespace ventrix {
namespace {

std::string ToUtf8(const char* text, std::int32_t source) {
    return Take(Q_ConvertByCode(text, source, kCodeUtf8, false, false));
}

TEST(Convert, EveryEncodingConvertsBothWays) {
    const struct {
        std::int32_t code;
        const char *bytes, *utf8;
    } rows[] = {
        {0, "\x8A\xA5\xDB\xF0", "ä•€\xEF\xA3\xBF"},
        {1, "\xE4", "ä"},
        {2, "a", "a"},
        {3, "\x80\xE4", "€ä"},
        {4, "\x8A", "ä"},
        {5, "\x1B$B4A;z\x1B(B", "漢字"},
        {6, "\x8A\xBF\x8E\x9A\xB1\\", "漢字ｱ\\"},
        {7, "\xB4\xC1\xBB\xFA", "漢字"},
        {8, "\xBA\x7E\xA6\x72", "漢字"},
        {9, "\xBA\xBA\xD7\xD6", "汉字"},
        {10, "\xBA\xBA\xD7\xD6\x81\x40", "汉字丂"},
        {12, "\xC7\xD1\xB1\xDB", "한글"},
        {16, "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
    };
    for (const auto& row : rows) {
        // The escape sequences of JIS7 begin with a control character, so controls have to be kept.
        EXPECT_EQ(Take(Q_ConvertByCode(row.bytes, row.code, kCodeUtf8, true, false)), row.utf8) << row.code;
        EXPECT_EQ(Take(Q_ConvertByCode(row.utf8, kCodeUtf8, row.code, true, false)), row.bytes) << row.code;
    }
    // ICU leaves HZ in its shifted state at the end.
    EXPECT_EQ(Take(Q_ConvertByCode("汉字", kCodeUtf8, 11, true, false)), "~{::WV");
    EXPECT_EQ(Take(Q_ConvertByCode("~{::WV~}", 11, kCodeUtf8, true, false)), "汉字");
}

TEST(Convert, Utf16EndsInA16BitZero) {
    const char16_t units[] = u"ä\tb\xD83D\xDE00";
    EXPECT_EQ(Take(Q_ConvertByCode(units, kCodeUtf16, kCodeUtf8, false, false)), "ä\tb\xF0\x9F\x98\x80");
    EXPECT_EQ(TakeWide(Q_ConvertByCode("ä\tb\xF0\x9F\x98\x80", kCodeUtf8, kCodeUtf16, false, false)), units);
    EXPECT_EQ(TakeWide(Q_ConvertByCode(units, kCodeUtf16, kCodeUtf16, false, false)), units);
    EXPECT_EQ(TakeWide(Q_ConvertByCode(u"", kCodeUtf16, kCodeUtf16, false, false)), u"");
    EXPECT_EQ(TakeWide(Q_ConvertByCode("", kCodeUtf8, kCodeUtf16, false, false)), u"");
}

TEST(Convert, ControlCharactersAreCopiedAndEndARun) {
    // Each run starts in the initial state, so both sides of the tab have their own shift sequences.
    EXPECT_EQ(Take(Q_ConvertByCode("漢\t漢", kCodeUtf8, 5, false, false)), "\x1B$B4A\x1B(B\t\x1B$B4A\x1B(B");
    EXPECT_EQ(ToUtf8("\t\x8A\r\n\n\x8A\x01", 0), "\tä\r\n\nä\x01");
    // Without keepControls the converter never sees the escape bytes, and the rest is ASCII.
    EXPECT_EQ(ToUtf8("\x1B$B4A\x1B(B", 5), "\x1B$B4A\x1B(B");
}

TEST(Convert, InvalidInputHasDefinedResults) {
    EXPECT_EQ(TakeWide(Q_ConvertByCode("a\xFF", kCodeUtf8, kCodeUtf16, false, false)), u"???");
    EXPECT_EQ(Take(Q_ConvertByCode("a\xFF", kCodeUtf8, 1, false, false)), "???");
    EXPECT_EQ(Take(Q_ConvertByCode("a\xFF", kCodeUtf8, kCodeUtf8, false, false)), "a\xFF");
    EXPECT_EQ(Q_ConvertByCode(nullptr, kCodeUtf8, 1, false, false), nullptr);
    EXPECT_EQ(Q_ConvertByCode("a", kCodeUtf8, 14, false, false), nullptr);
    EXPECT_EQ(Q_ConvertText(nullptr, "UTF-8", "macintosh", false, false), nullptr);
    EXPECT_EQ(Take(Q_ConvertText("\xE4", "", "UTF-8", false, false)), "\xE4");
    EXPECT_EQ(Take(Q_ConvertText("\xE4", "ISO-8859-1", nullptr, false, false)), "\xE4");
    EXPECT_DEATH(Q_ConvertByCode("a", 18, kCodeUtf8, false, false), "");
}

TEST(Convert, UnknownConverterKeepsControlCharactersOnly) {
    EXPECT_EQ(Take(Q_ConvertText("a\tb\nc", "no-such-converter", "UTF-8", false, false)), "\t\n");
    EXPECT_EQ(Take(Q_ConvertText("a\tb", "UTF-8", "no-such-converter", false, false)), "\t");
    EXPECT_EQ(Take(Q_ConvertText("ab", "UTF-8", "no-such-converter", false, false)), "");
}

TEST(Convert, EscapeFlagWritesUndefinedBytesAsEscapes) {
    EXPECT_EQ(Take(Q_ConvertText("ab\xFF", "US-ASCII", "UTF-8", false, true)), "ab%XFF");
    // A run may grow to twice its bytes plus one; a run of escapes only is longer and is dropped.
    EXPECT_EQ(Take(Q_ConvertText("\xFF\xFE\tab", "US-ASCII", "UTF-8", false, true)), "\tab");
}

TEST(Convert, ManyShortRunsOfAnEscapedEncodingFit) {
    EXPECT_EQ(Take(Q_ConvertByCode(test::Repeated("漢\t", 500).c_str(), kCodeUtf8, 5, false, false)),
              test::Repeated("\x1B$B4A\x1B(B\t", 500));
}

TEST(Convert, LocaleIsTheDefaultConverterAndKeepsControls) {
    EXPECT_EQ(Take(Q_ConvertText("a\tb", "locale", "ISO-8859-1", false, false)), "a\tb");
    EXPECT_EQ(Take(Q_ConvertText("a\tb", "UTF-8", "locale", false, false)), "a\tb");
}

TEST(Convert, SymbolSetsConvertThroughTheirTables) {
    const struct {
        std::int32_t code;
        const char* text;
        const char16_t* units;
    } rows[] = {
        {13, "!\"$-\xA0\x61\xFE", u"!\u2200\u2203\u2212\u20AC\u03B1\u23AD"},
        {13, "a\x7F\xFF\x80\360b", u"\u03B1\u03B2"},  // undefined bytes are dropped
        {14, "!%*\xFE\xAC\x7E", u"\u2701\u260E\u261B\u27BE\u2460\u275E"},
        {15, " !\xA0\xA1", u"\uF020\uF021\uF0A7\uF0A1"},
        {15, "\t!", u"\t\uF021"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(TakeWide(Q_ConvertByCode(row.text, row.code, kCodeUtf16, false, false)), row.units)
            << row.code;
    }
    EXPECT_EQ(Take(Q_ConvertByCode("\xC2\xA0\t漢a", 13, kCodeUtf8, false, true)), "€\tα");
    EXPECT_EQ(TakeWide(Q_ConvertByCode("\t!", 15, kCodeUtf16, true, false)), u"\uF021");
}

}  // namespace
}  // namespace ventrix
