#include "kit/text/encodings.h"

#include "kit/kit_environment.h"
#include "kit/text/characters.h"
#include "kit/text/utf8.h"

namespace ventrix {
namespace {

constexpr std::int32_t kShiftJis = 1;

TEST(Encodings, AreSelectedByNameInAnyCase) {
    EncodingScope scope("QuorlRoman");
    EXPECT_TRUE(Q_EncodingsReady());
    EXPECT_EQ(Q_CurrentEncoding(), 0);
    EXPECT_EQ(Q_SetEncoding("utf-8"), 5);
    EXPECT_EQ(Q_SetEncoding("Latin1"), 5);
    EXPECT_EQ(Q_SetEncoding(nullptr), 5);
    EXPECT_EQ(Q_SetEncoding("jisx0208.SHIFTJIS"), 1);
    EXPECT_EQ(Q_EncodingIndex("GB2312-80.EUC"), 4);
    EXPECT_EQ(Q_EncodingIndex("Latin1"), 0);
    EXPECT_STREQ(Q_EncodingOfConverter("velmar-ql-big5").name, "BIG5");
    EXPECT_STREQ(Q_EncodingOfConverter("EUC-JP").name, "QuorlRoman");
}

TEST(Encodings, BytePairsAreRecognisedByTheirRanges) {
    const struct {
        std::int32_t encoding;
        const char* pair;
        bool isPair;
    } rows[] = {
        {0, "\x81\x40", false}, {1, "\x81\x40", true},  {1, "\x9F\xFC", true},  {1, "\xA0\x40", false},
        {1, "\xE0\x7E", true},  {1, "\xFC\x7F", false}, {1, "\xFC\x40", true},  {1, "\xFD\x40", false},
        {1, "\xFD\x80", false}, {2, "\xA1\xA1", true},  {2, "\xA1\x40", false}, {2, "\xFE\xFF", false},
        {3, "\xA1\x7E", true},  {3, "\xA1\x80", false}, {4, "\x81\x7F", true},  {4, "\x80\x80", false},
        {4, "\xFF\x80", false}, {5, "\xC3\xA4", false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Q_IsBytePair(Q_EncodingAt(row.encoding), row.pair[0], row.pair[1]), row.isPair)
            << row.encoding << testing::PrintToString(row.pair);
    }
}

TEST(Utf8, SequencesHaveLengthValidityAndUnits) {
    const struct {
        const char* text;
        std::uint32_t length;
        bool isValid;
        std::u16string units;
    } rows[] = {
        {"a", 1, true, u"a"},
        {"\xC3\xA4", 2, true, u"ä"},
        {"\xE6\xBC\xA2", 3, true, u"漢"},
        {"\xF0\x9F\x98\x80", 4, true, u"\xD83D\xDE00"},
        {"\xF4\x8F\xBF\xBF", 4, true, u"\xDBFF\xDFFF"},
        {"\xF4\x90\x80\x80", 4, true, u"\xFFFD"},  // above the last character
        {"\xED\xA0\x80", 3, true, u"\xFFFD"},      // a surrogate
        {"\xE0\x81\x81", 3, true, u"A"},           // an overlong form
        {"\xC0\x80", 1, false, u"\x00C0"},
        {"\xC1", 1, false, u"\x00C1"},
        {"\xF5\x80", 1, false, u"\x00F5"},
        {"\x80", 1, false, u"\x0080"},
        {"\xE6\xBC", 3, false, u"\x6F00"},  // cut off: decoded as if zero bits followed
        {"\xC3", 2, false, u"\x00C0"},
        {"\xF1", 4, false, u"\xD8C0\xDC00"},
        {"\xC3(", 2, false, u"\x00E8"},
    };
    for (const auto& row : rows) {
        char16_t units[2] = {};
        EXPECT_EQ(Q_Utf8Length(row.text[0]), row.length) << testing::PrintToString(row.text);
        EXPECT_EQ(Q_IsValidUtf8(row.text), row.isValid) << testing::PrintToString(row.text);
        const int count = Q_Utf8ToUnits(row.text, units);
        EXPECT_EQ(std::u16string(units, static_cast<std::size_t>(count)), row.units)
            << testing::PrintToString(row.text);
    }
    EXPECT_FALSE(Q_IsValidUtf8(nullptr));
    EXPECT_TRUE(Q_IsValidUtf8(""));
    EXPECT_TRUE(Q_IsValidUtf8("\xE0\x80\x80"));
}

TEST(Utf8, NextStepsOverCharactersButNotOverTheEnd) {
    const char text[] = "a\xC3\xA4\xE6\xBC";
    const char* at = text;
    for (const int position : {1, 3, 5, 5}) {
        Q_Utf8Next(&at);
        EXPECT_EQ(at - text, position);
    }
}

TEST(Characters, CutsKeepCharactersWhole) {
    const struct {
        std::int32_t encoding;
        const char* text;
        std::uint32_t wanted, cut;
    } rows[] = {
        {5, "ab", 5, 5},  // no longer than wanted: the length stays
        {5, "ab", 2, 2},
        {5, "abc", 2, 2},
        {5, "\xC3\xA4\xC3\xB6", 3, 2},
        {5, "\xC3\xA4\xC3\xB6", 2, 2},
        {5, "\xC3\xA4", 1, 0},
        {5, "a\xF0\x9F\x98\x80", 4, 1},
        {5, "a\x80\x80\x80\x80\x80\x80", 6, 2},  // at most four bytes back
        {1, "\x81\x40\x81\x40", 3, 2},
        {1, "a\x81\x40", 2, 1},
        {1, "\x81\x40z", 2, 2},
        {0, "\x81\x40z", 1, 1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Q_CutPoint(row.text, row.wanted, row.encoding), row.cut)
            << testing::PrintToString(row.text) << row.wanted;
    }
    EXPECT_EQ(Q_CutPoint(nullptr, 3, 5), 3u);
}

TEST(Characters, CopyAndAppendWholeCharactersOnly) {
    char text[16] = "zzz";
    EXPECT_EQ(Q_StrCopyChars(text, "äö", 3, 5), 2u);
    EXPECT_STREQ(text, "ä");
    EXPECT_EQ(Q_StrCatChars(text, "öü", 6, 5), 4u);
    EXPECT_STREQ(text, "äö");
    EXPECT_EQ(Q_StrCatChars(text, "x", 3, 5), 4u);
    EXPECT_STREQ(text, "äö");
    EXPECT_EQ(Q_StrCopyChars(text, "x", 0, 5), 0u);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(Q_StrCopyChars(text, nullptr, 5, 5), 0u);
    EXPECT_EQ(Q_StrCopyChars(nullptr, "x", 5, 5), 0u);
    EXPECT_EQ(Q_StrCatChars(nullptr, "x", 5, 5), 0u);
}

TEST(Characters, LastOccurrenceIsNeverInsideACharacter) {
    const char* path =
        "a\\\x8F\x5C";  // a backslash, then a Japanese character with that byte in second place
    EXPECT_EQ(Q_StrFindLastChar(path, '\\', kShiftJis), path + 1);
    EXPECT_EQ(Q_StrFindLastChar(path, '\\', 0), path + 3);
    const char* text = "xäx";
    EXPECT_EQ(Q_StrFindLastChar(text, 'x', 5), text + 3);
    EXPECT_EQ(Q_StrFindLastChar(text, 0xA4, 5), nullptr);
    EXPECT_EQ(Q_StrFindLastChar(text, 0, 5), nullptr);
    EXPECT_EQ(Q_StrFindLastChar(nullptr, 'x', 5), nullptr);
    EXPECT_EQ(Q_StrFindLastChar("", 'x', 5), nullptr);
}

}  // namespace
}  // namespace ventrix
