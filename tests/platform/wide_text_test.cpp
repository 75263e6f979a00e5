#include "platform/wide_text.h"

#include <gtest/gtest.h>

#include "platform/exception.h"

using namespace ventrix::platform;

namespace {

TEST(WideText, WellFormedTextConvertsBothWays) {
    const struct {
        const char* utf8;
        const char16_t* wide;
    } rows[] = {
        {"", u""},
        {"a\x7F", u"a\u007F"},
        {"\xC2\x80\xDF\xBF", u"\u0080\u07FF"},
        {"\xE0\xA0\x80\xEF\xBF\xBD", u"\u0800\uFFFD"},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(WideFromUtf8(row.utf8), row.wide);
        EXPECT_EQ(Utf8FromWide(row.wide), row.utf8);
    }
}

TEST(WideText, MalformedBytesBecomeReplacements) {
    for (const char* bad : {"\x80", "\xC0", "\xC1", "\xF5", "\xFF", "\xC3", "\xE2"}) {
        EXPECT_EQ(WideFromUtf8(bad), u"\uFFFD") << bad;
    }
    EXPECT_EQ(WideFromUtf8("a\xC3(b"), u"a\uFFFD(b");
    EXPECT_EQ(WideFromUtf8("\xC0\x80"), u"\uFFFD\uFFFD");
    EXPECT_EQ(WideFromUtf8("\xE0\x80\xAF"), u"\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(WideFromUtf8("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(WideFromUtf8("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
    const char16_t lone[] = {u'a', 0xD83D, u'b', 0xDE00, 0xD83D};
    EXPECT_EQ(Utf8FromWide({lone, 5}),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(ExceptionDeathTest, PrintsOneLineAndEndsTheProcess) {
    EXPECT_DEATH(RaisePlatformException(1), "^Ventrix: platform exception 0x00000001, the process ends\n$");
}

}  // namespace
