// Conversion of text between any two encodings through ICU. Control characters below 0x20 pass through
// untouched. A text is zero-terminated bytes, or 16-bit units with a 16-bit zero at the end where its
// encoding is UTF-16. Results are the caller's, in kit memory, and end in two zero bytes, so that they are
// terminated in both forms.
#pragma once

#include <cstdint>

namespace ventrix {

/// Numbers of encodings for Q_ConvertByCode, as far as the kit uses them by name.
enum Q_EncodingCode : std::int32_t {
    kCodeRoman = 0,
    kCodeShiftJis = 6,
    kCodeSymbol = 13,  ///< The three symbol sets are sources only.
    kCodeDingbats = 14,
    kCodePrivateSymbol = 15,
    kCodeUtf8 = 16,
    kCodeUtf16 = 17,
};

/// Converts between two encodings given by number. With utf8Input the text of a symbol set stands in UTF-8,
/// one character for each byte of the set; keepControls sends control characters through the converters or
/// tables too. Null for a null text and for a symbol set as target; equal numbers give a copy; an unknown
/// source is fatal.
char* Q_ConvertByCode(const void* text, std::int32_t source, std::int32_t target, bool keepControls,
                      bool utf8Input);

/// Converts between two of ICU's converters given by name; "locale" is the process's default one. With
/// escape, bytes that the source can't read become "%XNN". Invalid UTF-8 gives "???", a null or empty name a
/// plain copy, a null text null. A stretch whose converter can't be opened is dropped.
char* Q_ConvertText(const void* text, const char* source, const char* target, bool keepControls, bool escape);

/// A text in the current encoding, in UTF-8. Where UTF-8 is current, a plain copy.
char* Q_CurrentToUtf8(const char* text);

}  // namespace ventrix
