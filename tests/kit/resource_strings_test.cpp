#include "kit/resource_strings.h"

#include "kit/kit_environment.h"
#include "kit/text/language.h"
#include "platform/module.h"
#include "support/text_rows.h"

namespace ventrix::test {
namespace {

constexpr platform::StringResource kStrings[] = {
    {1, u"Liste der gültigen Dateien"},
    {2, u"%M8A%L41%Bd2%M%LZZ"},
    {3, u"\xD83D\xDE00 emoji"},
};

// Loads strings from a table of the test's own.
class ResourceStrings : public testing::Test {
  protected:
    ResourceStrings() {
        resources_.strings = kStrings;
        platform::BindResources(&resources_, &resources_);
        Q_SetResourceModule(&resources_);
    }
    ~ResourceStrings() override {
        platform::BindResources(&resources_, nullptr);
        Q_SetResourceModule(nullptr);
    }

    std::string Load(std::uint32_t id, std::uint32_t size, int expected) {
        char buffer[1024] = "old";
        EXPECT_EQ(Q_LoadResourceString(id, buffer, size), expected) << id;
        return buffer;
    }

  private:
    platform::ModuleResources resources_{};
};

TEST_F(ResourceStrings, AreLoadedAsUtf8AndCutBetweenCharacters) {
    EXPECT_EQ(Load(1, 1023, 0), "Liste der gültigen Dateien");
    EXPECT_EQ(Load(1, 8, 0), "Liste d");
    EXPECT_EQ(Load(1, 13, 0), "Liste der g");  // the umlaut has two bytes
    EXPECT_EQ(Load(3, 8, 0), "\xF0\x9F\x98\x80 em");
    EXPECT_EQ(Load(1, 1, 1), "");
    EXPECT_EQ(Load(16, 1023, 1), "");
    EXPECT_EQ(Load(1, 0, 1), "old");
    EXPECT_EQ(Q_LoadResourceString(1, nullptr, 10), 1);
    Q_SetResourceModule(nullptr);
    EXPECT_EQ(Load(1, 1023, 1), "");
}

TEST_F(ResourceStrings, ByteEscapesAreExpanded) {
    EXPECT_EQ(Load(2, 1023, 0), "äA“%M%LZZ");
}

TEST_F(ResourceStrings, AreLoadedUnconvertedInOtherEncodings) {
    EncodingScope scope("QuorlRoman");
    EXPECT_EQ(Load(2, 1023, 0), "\212A\xD2%M%LZZ");
    EXPECT_EQ(Load(16, 1023, 1), "");
}

TEST(ByteEscapes, AreReplacedInPlace) {
    const TextRow rows[] = {
        {"%41", "%41"},           {"%Q41", "%Q41"},   {"%L41", "A"},       {"%LZZ", "%LZZ"},
        {"%L4", "%L4"},           {"%l41", "%l41"},   {"%L4g", "%L4g"},    {"%L-1", "%L-1"},
        {"%M8a%M8A", "ää"},       {"%LFF", "\xFF"},   {"%%L41", "%A"},     {"%", "%"},
        {"%MF0", "\xEF\xA3\xBF"}, {"a%M09b", "a\tb"}, {"%L25L41", "%L41"},
    };
    ExpectRows(rows, [](std::string text) {
        Q_ExpandByteEscapes(text.data());
        return std::string(text.c_str());
    });
    Q_ExpandByteEscapes(nullptr);
}

TEST(ByteEscapes, SystemEncodingFollowsTheLanguage) {
    Q_SetSystemLanguage("japanese");
    char text[] = "%BB1%MB1";
    Q_ExpandByteEscapes(text);
    EXPECT_STREQ(text, "ｱ±");
    Q_SetSystemLanguage("deutsch");
    EXPECT_EQ(Q_SystemEncodingCode(), 0);
}

}  // namespace
}  // namespace ventrix::test
