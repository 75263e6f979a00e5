// Conversion of strings between any two encodings through ICU. Control characters below 0x20 are copied
// without conversion. A string in UTF-16 is 16-bit units with a 16-bit zero at the end, any other one
// zero-terminated bytes. Results are in kit memory, owned by the caller, and end in two zero bytes, which
// terminate them in either form.
#pragma once

#include <cstdint>

namespace ventrix {

/// Encoding codes for Q_ConvertByCode: those that the kit refers to by name.
enum Q_EncodingCode : std::int32_t {
    kCodeRoman = 0,
    kCodeShiftJis = 6,
    kCodeSymbol = 13,  ///< The three symbol sets can only be sources.
    kCodeDingbats = 14,
    kCodePrivateSymbol = 15,
    kCodeUtf8 = 16,
    kCodeUtf16 = 17,
};

/// Converts between two encodings given by code. With utf8Input, text of a symbol set is itself encoded in
/// UTF-8, one character for each byte of the set. With keepControls, control characters are converted like
/// others. Null for a null text and for a symbol set as target. Equal codes give a copy. An unknown source is
/// fatal.
char* Q_ConvertByCode(const void* text, std::int32_t source, std::int32_t target, bool keepControls,
                      bool utf8Input);

/// Converts between two ICU converters given by name; "locale" is the default converter of the process. With
/// escape, bytes that the source encoding does not define become "%XNN". Invalid UTF-8 gives "???", a null or
/// empty name a plain copy, a null text null. If a converter cannot be opened, everything except the control
/// characters is dropped.
char* Q_ConvertText(const void* text, const char* source, const char* target, bool keepControls, bool escape);

/// Converts a string from the current encoding to UTF-8. A plain copy if UTF-8 is current.
char* Q_CurrentToUtf8(const char* text);

}  // namespace ventrix
