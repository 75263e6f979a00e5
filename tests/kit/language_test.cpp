#include "kit/text/language.h"

#include <gtest/gtest.h>
#include <unicode/uloc.h>

#include "kit/text/collate.h"

namespace ventrix {
namespace {

TEST(Language, WordsHaveNumbersAndEncodingCodes) {
    const struct {
        const char* word;
        std::int32_t number, code;
    } rows[] = {
        {"usenglish", 1, 0}, {"deutsch", 3, 0},
        {"Deutsch", 0, 0},   {"svenska", 17, 0},
        {"japanese", 18, 6}, {"traditionalchinese", 19, 6},
        {"korean", 21, 6},   {"newgerman", 22, 0},
        {"hebrew", 40, 0},   {"farsi", 42, 0},
        {"", 0, 0},          {nullptr, 0, 0},
        {"klingon", 0, 0},   {"simplifiedchinese", 20, 6},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Q_LanguageNumber(row.word), row.number) << (row.word ? row.word : "null");
        EXPECT_EQ(Q_EncodingCodeOfLanguage(row.word), row.code) << (row.word ? row.word : "null");
    }
}

// Sets ICU's default locale for the length of a scope.
class LocaleScope {
  public:
    explicit LocaleScope(const char* locale) : former_(uloc_getDefault()) { Set(locale); }
    ~LocaleScope() { Set(former_.c_str()); }

  private:
    static void Set(const char* locale) {
        UErrorCode status = U_ZERO_ERROR;
        uloc_setDefault(locale, &status);
    }
    std::string former_;
};

TEST(Collate, FollowsTheLanguageOfTheLocale) {
    const struct {
        const char *locale, *first, *second;
        int full, withoutCase;
    } rows[] = {
        {"de_DE", "ä", "b", -1, -1},       {"sv_SE", "ä", "z", 1, 1},  // Swedish sorts it after z
        {"de_DE", "a", "A", -1, 0},        {"de_DE", "a", "á", -1, -1}, {"de_DE", "Straße", "Strasse", 1, 1},
        {"de_DE", "ä", "a\xCC\x88", 0, 0},  // composed and decomposed
        {"es_ES", "ñ", "o", -1, -1},       {"es_ES", "ñ", "nz", 1, 1},  {"cs_CZ", "ch", "h", 1, 1},
        {"en_US", "ch", "h", -1, -1},      {"en_US", "", "a", -1, -1},  {"en_US", nullptr, "", 0, 0},
        {"en_US", "b", "a", 1, 1},
    };
    for (const auto& row : rows) {
        const LocaleScope scope(row.locale);
        EXPECT_EQ(Q_CollateUtf8(row.first, row.second, 2), row.full) << row.locale << " " << row.second;
        EXPECT_EQ(Q_CollateUtf8(row.first, row.second, 1), row.withoutCase)
            << row.locale << " " << row.second;
    }
}

TEST(Collate, FirstCharactersCompareWithoutCase) {
    const LocaleScope scope("de_DE");
    EXPECT_EQ(Q_CollateChars("abc", "Axy"), 0);
    EXPECT_EQ(Q_CollateChars("äz", "b"), -1);
    EXPECT_EQ(Q_CollateChars("b", "Ä"), 1);
    EXPECT_EQ(Q_CollateChars("\xF0\x9F\x98\x80x", "\xF0\x9F\x98\x80y"), 0);
    EXPECT_EQ(Q_CollateChars("", nullptr), 0);
    EXPECT_EQ(Q_CollateChars("", "a"), -1);
}

}  // namespace
}  // namespace ventrix
