#include "kit/text/collate.h"

#include <unicode/ucol.h>

#include <memory>

#include "kit/text/convert.h"
#include "kit/text/strings.h"
#include "kit/text/utf8.h"

namespace ventrix {
namespace {

struct CollatorCloser {
    void operator()(UCollator* collator) const { ucol_close(collator); }
};
using Collator = std::unique_ptr<UCollator, CollatorCloser>;

// A collator of the default locale; null if ICU has none.
Collator OpenCollator(UCollationStrength strength) {
    UErrorCode status = U_ZERO_ERROR;
    Collator collator(ucol_open(nullptr, &status));
    if (U_FAILURE(status) != 0) {
        return nullptr;
    }
    ucol_setStrength(collator.get(), strength);
    return collator;
}

bool Normalizes(UCollator* collator) {
    UErrorCode status = U_ZERO_ERROR;
    ucol_setAttribute(collator, UCOL_NORMALIZATION_MODE, UCOL_ON, &status);
    return U_FAILURE(status) == 0;
}

Q_String ToUnits(const char* text) {
    return Q_String(Q_ConvertByCode(text == nullptr ? "" : text, kCodeUtf8, kCodeUtf16, false, false));
}

const UChar* Units(const Q_String& text) {
    return reinterpret_cast<const UChar*>(text.get());
}

// Decodes the first character and returns the number of its units; 0 for null and the empty string.
int FirstCharacter(const char* text, char16_t (&units)[2]) {
    return Q_StrLen(text) == 0 ? 0 : Q_Utf8ToUnits(text, units);
}

}  // namespace

int Q_CollateUtf8(const char* first, const char* second, int strength) {
    const Collator collator = OpenCollator(strength == 1 ? UCOL_SECONDARY : UCOL_TERTIARY);
    if (collator == nullptr || !Normalizes(collator.get())) {
        return 0;
    }
    const Q_String a = ToUnits(first);
    const Q_String b = ToUnits(second);
    return ucol_strcoll(collator.get(), Units(a), -1, Units(b), -1);
}

int Q_CollateChars(const char* first, const char* second) {
    // Opening a collator loads its rules, so one is kept until the process ends.
    static const UCollator* const collator = OpenCollator(UCOL_SECONDARY).release();
    if (collator == nullptr) {
        return 0;
    }
    char16_t a[2];
    char16_t b[2];
    const int aCount = FirstCharacter(first, a);
    const int bCount = FirstCharacter(second, b);
    return ucol_strcoll(collator, a, aCount, b, bCount);
}

}  // namespace ventrix
