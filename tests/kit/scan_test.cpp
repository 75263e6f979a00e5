#include "kit/format/scan.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>

namespace ventrix {
namespace {

TEST(Scan, ReadsIntegers) {
    const struct {
        const char *text, *format;
        int count;
        int value;  // -7 where nothing is stored
    } rows[] = {
        {"12", "%d", 1, 12},        {"x", "%d", 0, -7},        {"", "%d", -1, -7},
        {"-", "%d", -1, -7},        {"-x", "%d", 0, -7},       {"  \t\n-12x", "%d", 1, -12},
        {"\r12", "%d", 0, -7},                                // a carriage return is not white space
        {"+5", "%d", 1, 5},         {"-123", "%3d", 1, -12},  // the width counts the sign
        {"0x1F", "%i", 1, 31},      {"017", "%i", 1, 15},      {"09", "%i", 1, 0},
        {"1f", "%x", 1, 31},        {"0X1f", "%X", 1, 31},     {"0xg", "%x", 1, 0},
        {"0x12", "%2x", 1, 0},  // the width ends before the first digit after the prefix
        {"777", "%o", 1, 511},      {"8", "%o", 0, -7},        {"4294967295", "%u", 1, -1},
        {"4294967297", "%d", 1, 1},  // values wrap at 32 bits
        {"a 12", "a %d", 1, 12},    {"b12", "a%d", 0, -7},     {"a", "a%d", -1, -7},
        {"50%", "%d%%", 1, 50},     {"5 %7", "%*d%%%d", 1, 7}, {"abc12", "%*[a-c]%d", 1, 12},
        {"12", nullptr, 0, -7},     {"12", "", 0, -7},         {"12", "%", 0, -7},
        {"12", "%q", 0, -7},        {"12", "%ld", 1, 12},      {"  12 ", "%n", 0, 2},
        {"12 ", "%*d%n", 0, 3},
    };
    for (const auto& row : rows) {
        int value = -7;
        EXPECT_EQ(Q_ScanText(row.text, row.format, &value), row.count)
            << row.text << " by " << (row.format ? row.format : "null");
        EXPECT_EQ(value, row.value) << row.text;
    }
    EXPECT_EQ(Q_ScanText(nullptr, "%d"), -1);
}

TEST(Scan, StoresShortAndLongValuesInTheirWidth) {
    std::int16_t small[2] = {-1, -1};
    EXPECT_EQ(Q_ScanText("65538", "%hd", small), 1);
    EXPECT_EQ(small[0], 2);
    EXPECT_EQ(small[1], -1);
    double wide = 0;
    float narrow = 0;
    EXPECT_EQ(Q_ScanText("1.5e2 -0.25x", "%lf%f", &wide, &narrow), 2);
    EXPECT_EQ(wide, 150);
    EXPECT_EQ(narrow, -0.25F);
    EXPECT_EQ(Q_ScanText("12345", "%3lf", &wide), 1);
    EXPECT_EQ(wide, 123);
    EXPECT_EQ(Q_ScanText("-", "%lf", &wide), -1);
    EXPECT_EQ(Q_ScanText("abc", "%lf", &wide), 0);
}

TEST(Scan, ReadsStringsAndSets) {
    const struct {
        const char *text, *format;
        int count;
        const char* value;
    } rows[] = {
        {"  ab cd", "%s", 1, "ab"}, {"ab\rcd", "%s", 1, "ab\rcd"}, {"abcd", "%2s", 1, "ab"},
        {"   ", "%s", -1, "?"},     {"ab", "%c", 1, "a??"},  // one byte, without a terminator
        {" b", "%c", 1, " ??"},     {"abc1", "%[a-z]", 1, "abc"},  {"abc1", "%[^0-9]", 1, "abc"},
        {"]a[", "%[]a]", 1, "]a"},  {"x]", "%[^]]", 1, "x"},       {"a-b", "%[ab-]", 1, "a-b"},
        {" a", "%[a]", 0, "?"},     {"abc", "%[abc", 1, "abc"},    {"aaaa", "%3[a]", 1, "aaa"},
    };
    for (const auto& row : rows) {
        char value[8] = "???";
        value[1] = row.value[0] == '?' ? '\0' : '?';
        EXPECT_EQ(Q_ScanText(row.text, row.format, value), row.count) << row.text << " by " << row.format;
        EXPECT_STREQ(value, row.value) << row.format;
    }
}

TEST(Scan, CountsUpToTheFailure) {
    int first = 0;
    int second = 0;
    EXPECT_EQ(Q_ScanText("1,2", "%d,%d", &first, &second), 2);
    EXPECT_EQ(Q_ScanText("1;2", "%d,%d", &first, &second), 1);
    EXPECT_EQ(Q_ScanText("1", "%d,%d", &first, &second), 1);
    EXPECT_EQ(Q_ScanText("1,", "%d,%d", &first, &second), 1);
}

std::string RandomText(std::mt19937& random, const char* alphabet, std::size_t most) {
    const std::string letters = alphabet;
    std::string text(random() % (most + 1), ' ');
    for (char& letter : text) {
        letter = letters[random() % letters.size()];
    }
    return text;
}

// The C library's scanner is the reference. Left out are the differences: a sign at the end of the text and
// "0x" without a digit, which the C library refuses, carriage returns, and "%c" with a width.
TEST(Scan, AgreesWithTheCLibrary) {
    constexpr const char* kFormats[] = {"%d",   "%3d,%d", "%u %u",     "%o%x",        "%i%i",
                                        "%hd",  "%lf%d",  "%s%s",      "%2s%d",       "%[0-9]%s",
                                        "%c%c", "a%db",   "%*d%d%%%d", "%[^,],%3[a]", "%d%*s%d"};
    std::mt19937 random(7);
    int compared = 0;
    for (int round = 0; round < 40000; ++round) {
        const std::string text = RandomText(random, "0123456789ab,% 1xF", 12);
        const char* format = kFormats[random() % std::size(kFormats)];
        if (text.find("0x") != std::string::npos || text.find("%") == 0) {
            continue;
        }
        alignas(8) char ours[3][32] = {};
        alignas(8) char theirs[3][32] = {};
        const int count = Q_ScanText(text.c_str(), format, ours[0], ours[1], ours[2]);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        const int expected = std::sscanf(text.c_str(), format, theirs[0], theirs[1], theirs[2]);
#pragma GCC diagnostic pop
        ++compared;
        ASSERT_EQ(count, expected) << "'" << text << "' by " << format;
        for (int item = 0; item < 3; ++item) {
            ASSERT_EQ(std::string(ours[item], 32), std::string(theirs[item], 32))
                << "'" << text << "' by " << format;
        }
    }
    EXPECT_GT(compared, 30000);
}

}  // namespace
}  // namespace ventrix
