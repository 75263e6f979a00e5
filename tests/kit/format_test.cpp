#include "kit/format/format.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <random>

#include "kit/console.h"
#include "kit/kit_environment.h"
#include "support/test_drives.h"
#include "support/text_rows.h"

namespace ventrix {
namespace {

template <class... Arguments>
std::string Formatted(const char* format, Arguments... arguments) {
    std::vector<char> text(20000, 'z');
    Q_FormatText(text.data(), format, arguments...);
    return text.data();
}

TEST(Format, ConversionsDifferFromTheCLibraryAsDocumented) {
    const char* null = nullptr;
    EXPECT_EQ(Formatted("[%s]", null), "[]");
    EXPECT_EQ(Formatted("[%5s]", null), "[     ]");
    EXPECT_EQ(Formatted("%5s", "ab"), "   ab");
    EXPECT_EQ(Formatted("%*d", 4, 7), "   7");
    EXPECT_EQ(Formatted("%s", std::string(300, 'x').c_str()), std::string(300, 'x'));
    EXPECT_EQ(Formatted("%s%300d|%.200f", std::string(5000, 'x').c_str(), 7, 1e300).size(),
              5000u + 300 + 1 + 502);
    EXPECT_EQ(Formatted(nullptr), "");
    EXPECT_EQ(Formatted("%d%%%5%", 7), "7%%");
    EXPECT_EQ(Formatted("[%C|%3C|%-3C]", "äöü", "x", "\xF0\x9F\x98\x80"), "[ä|  x|\xF0\x9F\x98\x80]");
    EXPECT_EQ(Formatted("[%C|%2C]", null, ""), "[|  ]");
    EXPECT_EQ(Formatted("[%c]", 0), "[]");
    // Forms of other C runtimes.
    EXPECT_EQ(Formatted("%'d|%'.2f|%-'6u|", 1234567, 9876.5, 4321), "1234567|9876.50|4321  |");
    EXPECT_EQ(Formatted("%I64d|%I64X|%'012I64d", -1234567890123LL, 0xABCDEF0123ULL, 1234567890LL),
              "-1234567890123|ABCDEF0123|001234567890");
    EXPECT_EQ(Formatted("%6'4d", 1), "%6'4d") << "a flag after the width";
    EXPECT_EQ(Formatted("%I32d|%Iu|%s", -7, std::size_t{1} << 40, "end"), "-7|1099511627776|end");
    EXPECT_EQ(Formatted(("%" + std::string(150, 'I') + "d").c_str(), 1), "%" + std::string(150, 'I') + "d");
    // From a "%" without a valid conversion on, the format is written unchanged.
    EXPECT_EQ(Formatted("%d 100%", 1), "1 100%");
    EXPECT_EQ(Formatted("%d %y %d", 1, 2), "1 %y %d");
    EXPECT_EQ(Formatted(("%" + std::string(200, '0') + "d").c_str(), 1), "%" + std::string(200, '0') + "d");
    Q_FormatText(nullptr, "%d", 1);
}

TEST(Format, StoresTheBytesWrittenSoFar) {
    std::int32_t count[2] = {-1, -1};
    EXPECT_EQ(Formatted("abc%n%d%n", &count[0], 12, &count[1]), "abc12");
    EXPECT_EQ(count[0], 3);
    EXPECT_EQ(count[1], 5);
    std::int16_t narrow[2] = {-1, -1};
    EXPECT_EQ(Formatted("abcd%hn", narrow), "abcd");
    EXPECT_EQ(narrow[0], 4);
    EXPECT_EQ(narrow[1], -1);
}

TEST(Format, CharacterConversionNeedsUtf8) {
    const EncodingScope scope("QuorlRoman");
    EXPECT_EQ(Formatted("[%C]", "a"), "[]");
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

template <class... Arguments>
void Same(const std::string& format, Arguments... arguments) {
    std::vector<char> theirs(20000);
    std::snprintf(theirs.data(), theirs.size(), format.c_str(), arguments...);
    ASSERT_EQ(Formatted(format.c_str(), arguments...), std::string(theirs.data())) << format;
}

#pragma GCC diagnostic pop

template <class T>
T Value(std::mt19937& random) {
    const std::uint64_t bits = std::uint64_t{random()} << 32 | random();
    return static_cast<T>(random() % 3 == 0 ? bits : bits % 200 - 100);
}

template <class Integer>
void SameInteger(std::mt19937& random, const std::string& head, const char* prefix) {
    constexpr char kLetters[] = "dioxXu";
    Same("<" + head + prefix + kLetters[random() % 6] + ">", Value<Integer>(random));
}

void SameByType(std::mt19937& random, const std::string& head) {
    constexpr const char* kTexts[] = {"", "a", "äöü", "a somewhat longer text with %d in it"};
    constexpr double kNumbers[] = {0,     -0.0,       1,        -1.5,
                                   1e300, 3.14159e-7, 12345678, std::numeric_limits<double>::infinity()};
    const std::function<void()> kinds[] = {
        [&] { SameInteger<int>(random, head, ""); },
        [&] { SameInteger<int>(random, head, "h"); },
        [&] { SameInteger<int>(random, head, "hh"); },
        [&] { SameInteger<long>(random, head, "l"); },
        [&] { SameInteger<long long>(random, head, "ll"); },
        [&] { SameInteger<std::intmax_t>(random, head, "j"); },
        [&] { SameInteger<std::ptrdiff_t>(random, head, random() % 2 == 0 ? "z" : "t"); },
        [&] { Same("x" + head + 's', kTexts[random() % 4]); },
        [&] { Same(head + "eEfgG"[random() % 5] + "%%", kNumbers[random() % 8]); },
        [&] { Same(head + 'c', 'a' + static_cast<int>(random() % 26)); },
    };
    kinds[random() % 10]();
}

// The differences are covered above.
TEST(Format, AgreesWithTheCLibrary) {
    std::mt19937 random(4);
    for (int round = 0; round < 20000; ++round) {
        std::string head = "%";
        for (const char flag : {' ', '+', '-', '0', '#'}) {
            head += random() % 4 == 0 ? std::string(1, flag) : "";
        }
        head += random() % 2 == 0 ? std::to_string(1 + random() % 300) : "";
        head += random() % 2 == 0 ? "." + (random() % 4 == 0 ? "" : std::to_string(random() % 30)) : "";
        ASSERT_NO_FATAL_FAILURE(SameByType(random, head));
    }
    for (const int star : {-20, -1, 0, 1, 20}) {
        Same("<%*d>", star, 7);
        Same("<%.*d>", star, 7);
        Same("<%-*.*s>", star, star, "some text");
        Same("<%.*f>", star, 2.5);
    }
    Same("%p %p", static_cast<void*>(&random), static_cast<void*>(nullptr));
    Same("%Lf", 2.5L);
    Same("plain");
    Same("");
}

std::vector<std::string> console;

// Collects the console output of a test.
class Print : public testing::Test {
  protected:
    Print() {
        console.clear();
        Q_ConsoleHook = [](const char* text) -> std::int32_t {
            console.emplace_back(text);
            return 0;
        };
    }
    ~Print() override { Q_ConsoleHook = nullptr; }

    static std::string Joined() {
        std::string text;
        for (const std::string& piece : console) {
            text += piece;
        }
        return text;
    }
};

TEST_F(Print, SendsRunsToTheConsole) {
    EXPECT_EQ(Q_Print(nullptr, "%s has %d items.\n", "list", 3), 18u);
    EXPECT_EQ(Joined(), "list has 3 items.\n");
    console.clear();
    EXPECT_EQ(Q_Print(nullptr, "one line\n"), 9u);
    EXPECT_EQ(console, (std::vector<std::string>{"one line\n"}));
}

TEST_F(Print, SplitsLongRunsBetweenCharacters) {
    const std::string umlauts = test::Repeated("ä", 300);
    EXPECT_EQ(Q_Print(nullptr, (umlauts + "%d").c_str(), 1), 601u);
    EXPECT_EQ(Joined(), umlauts + "1");
    EXPECT_EQ(console[0].size(), 254u);
    console.clear();
    // A terminated run is sent whole, however long it is.
    Q_Print(nullptr, "%s", umlauts.c_str());
    EXPECT_EQ(console.front(), umlauts);
    console.clear();
    EXPECT_EQ(Q_Print(nullptr, "a%cb", 0), 3u);
    EXPECT_EQ(Joined(), "ab");
}

TEST_F(Print, OutputIsDroppedWithoutAConsole) {
    Q_ConsoleHook = nullptr;
    EXPECT_EQ(Q_Print(nullptr, "lost %d", 1), 6u);
}

TEST_F(Print, WritesToAChannel) {
    test::TestDrives drives;
    Q_Channel* channel = OpenChannel("C:\\a", "w");
    EXPECT_EQ(Q_Print(channel, "%s=%d\n", "x", 12), 5u);
    Q_ChannelClose(&channel);
    EXPECT_EQ(drives.Read("C:\\a"), "x=12\n");
    EXPECT_TRUE(console.empty());
}

}  // namespace
}  // namespace ventrix
