#include "kit/language.h"

#include "kit/convert.h"
#include "kit/strings.h"

namespace ventrix {
namespace {

std::int32_t systemEncodingCode = Q_CodeRoman;

// A word's number is its place in the list, counted from 1.
constexpr const char* languages[] = {
    "usenglish",
    "ukenglish",
    "deutsch",
    "swissgerman",
    "francais",
    "canadianfrench",
    "espanol",
    "catalan",
    "italiano",
    "portuguese",
    "brasil",
    "danish",
    "dutch",
    "norwegian",
    "nynorsk",
    "finnish",
    "svenska",
    "japanese",
    "traditionalchinese",
    "simplifiedchinese",
    "korean",
    "newgerman",
    "newswissgerman",
    "newdutch",
    "greek",
    "russian",
    "czech",
    "polish",
    "hungarian",
    "turkish",
    "slovak",
    "slovenian",
    "bulgarian",
    "croatian",
    "estonian",
    "latvian",
    "lithuanian",
    "romanian",
    "arabic",
    "hebrew",
    "thai",
    "farsi",
};

constexpr std::int32_t firstDoubleByte = 18;
constexpr std::int32_t lastDoubleByte = 21;

}  // namespace

std::int32_t Q_LanguageNumber(const char* word) {
    std::int32_t number = 0;
    for (const char* language : languages) {
        ++number;
        if (Q_StrEqual(word, language)) {
            return number;
        }
    }
    return 0;
}

std::int32_t Q_EncodingCodeOfLanguage(const char* word) {
    const std::int32_t number = Q_LanguageNumber(word);
    return number >= firstDoubleByte && number <= lastDoubleByte ? Q_CodeShiftJis : Q_CodeRoman;
}

int Q_SetSystemLanguage(const char* word) {
    systemEncodingCode = Q_EncodingCodeOfLanguage(word);
    return 0;
}

std::int32_t Q_SystemEncodingCode() {
    return systemEncodingCode;
}

}  // namespace ventrix
