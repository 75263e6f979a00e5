#include "kit/text/language.h"

#include "kit/text/convert.h"
#include "kit/text/strings.h"

namespace ventrix {
namespace {

std::int32_t systemEncodingCode = kCodeRoman;

// A word's number is its position in this list, counted from 1.
constexpr const char* kLanguages[] = {
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

constexpr std::int32_t kFirstDoubleByte = 18;
constexpr std::int32_t kLastDoubleByte = 21;

}  // namespace

std::int32_t Q_LanguageNumber(const char* word) {
    std::int32_t number = 0;
    for (const char* language : kLanguages) {
        ++number;
        if (Q_StrEqual(word, language)) {
            return number;
        }
    }
    return 0;
}

std::int32_t Q_EncodingCodeOfLanguage(const char* word) {
    const std::int32_t number = Q_LanguageNumber(word);
    return number >= kFirstDoubleByte && number <= kLastDoubleByte ? kCodeShiftJis : kCodeRoman;
}

int Q_SetSystemLanguage(const char* word) {
    systemEncodingCode = Q_EncodingCodeOfLanguage(word);
    return 0;
}

std::int32_t Q_SystemEncodingCode() {
    return systemEncodingCode;
}

}  // namespace ventrix
