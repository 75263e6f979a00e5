#include "kit/text/strings.h"

#include <unicode/uchar.h>

#include "kit/kit_environment.h"
#include "kit/text/convert.h"

namespace ventrix {
namespace {

TEST(Strings, NullReadsAsTheEmptyString) {
    EXPECT_EQ(Q_StrLen(nullptr), 0u);
    EXPECT_EQ(Q_StrDup(nullptr), nullptr);
    EXPECT_EQ(Take(Q_StrDup("")), "");
    EXPECT_TRUE(Q_StrEqual(nullptr, ""));
    EXPECT_TRUE(Q_StrIEqual("", nullptr));
    EXPECT_GT(Q_StrICompare("a", nullptr), 0);
    EXPECT_TRUE(Q_StrPrefix(nullptr, ""));
    EXPECT_TRUE(Q_StrPrefix("a", nullptr));
    EXPECT_FALSE(Q_StrPrefix(nullptr, "a"));
    EXPECT_EQ(Q_StrChr(nullptr, 'a'), nullptr);
}

TEST(Strings, CopyAndAppendRespectTheSize) {
    const struct {
        const char *start, *text;
        std::uint32_t size;
        const char *copied, *appended;
    } rows[] = {
        {"ab", "cdef", 5, "cdef", "abcd"}, {"ab", "cdef", 3, "cd", "ab"},
        {"ab", "cdef", 2, "c", "ab"},  // already longer than the size: unchanged
        {"ab", "cdef", 1, "", "ab"},       {"ab", "cdef", 0, "", "ab"},
        {"ab", nullptr, 9, "", "ab"},      {"", "x", 9, "x", "x"},
    };
    for (const auto& row : rows) {
        char copy[16] = "zzzzzzzz";
        EXPECT_EQ(Q_StrCopyN(copy, row.text, row.size), Q_StrLen(row.copied)) << row.size;
        EXPECT_STREQ(copy, row.copied) << row.size;
        char whole[16];
        Q_StrCopy(whole, row.start);
        Q_StrCatN(whole, row.text, row.size);
        EXPECT_STREQ(whole, row.appended) << row.size;
    }
}

TEST(Strings, OneByteIsAppendedIfItFits) {
    char text[8] = "abc";
    EXPECT_EQ(Q_StrCatChar(text, 'd', 4), 3u);
    EXPECT_EQ(Q_StrCatChar(text, 'd', 0), 3u);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(Q_StrCatChar(text, 'd', 5), 4u);
    EXPECT_STREQ(text, "abcd");
    Q_StrTrunc(text, 1);
    Q_StrCat(text, "xy");
    EXPECT_STREQ(text, "axy");
}

TEST(Strings, ComparisonIgnoresCaseByTheTable) {
    const struct {
        const char *first, *second;
        int order;
    } rows[] = {
        {"-DocID", "-docid", 0},
        {"a", "B", -1},
        {"B", "a", 1},
        {"ab", "a", 'b'},
        {"\x80", "\x8A", 0},
        {"\x8A", "\x80", 0},
        {"\xC3\x84", "\xC3\xA4", 0x96 - 0xA4},  // UTF-8 letters beyond ASCII do not fold as such
        {"[", "{", '[' - '{'},
        {"@", "`", '@' - '`'},
        {"\xF4", "\x9D", 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Q_StrICompare(row.first, row.second), row.order) << row.first << " " << row.second;
        EXPECT_EQ(Q_StrIEqual(row.first, row.second), row.order == 0) << row.first << " " << row.second;
    }
    EXPECT_FALSE(Q_StrEqual("a", "A"));
}

char32_t MacRoman(unsigned char byte) {
    const char text[] = {static_cast<char>(byte), '\0'};
    return TakeWide(Q_ConvertText(text, "macintosh", "UTF-16", true, false))[0];
}

// ICU is the reference: what it can fold within the Mac OS Roman set is what the table folds.
TEST(Strings, CaseTablePairsTheLettersOfMacRoman) {
    for (int value = 1; value < 256; ++value) {
        const auto byte = static_cast<unsigned char>(value);
        const auto lower = static_cast<char32_t>(u_tolower(static_cast<UChar32>(MacRoman(byte))));
        const std::u16string unit(1, static_cast<char16_t>(lower));
        const std::string back = Take(Q_ConvertText(unit.c_str(), "UTF-16", "macintosh", true, false));
        const bool isInSet = MacRoman(static_cast<unsigned char>(back[0])) == lower;
        const auto expected = isInSet ? static_cast<unsigned char>(back[0]) : byte;
        EXPECT_EQ(Q_FoldByte(byte), expected) << value;
    }
}

TEST(Strings, FirstByteIsFoundButNotTheTerminator) {
    const char* text = "abcb";
    EXPECT_EQ(Q_StrChr(text, 'b'), text + 1);
    EXPECT_EQ(Q_StrChr(text, 'z'), nullptr);
    EXPECT_EQ(Q_StrChr(text, 0), nullptr);
    EXPECT_EQ(Q_StrChr(text, 0x100), nullptr);
}

}  // namespace
}  // namespace ventrix
