// Reading UTF-8 one sequence at a time.
#pragma once

#include <cstdint>

namespace ventrix {

/// Whether every sequence has a lead byte in 0xC2 to 0xF4 and its continuation bytes. Overlong forms and
/// surrogates pass. False for null, true for the empty text.
bool Q_IsValidUtf8(const char* text);

/// Bytes of the sequence that the lead byte opens: 1 to 4; 1 for a byte that can't lead.
std::uint32_t Q_Utf8Length(char lead);

/// Steps the pointer over one character. It never steps over the terminator.
void Q_Utf8Next(const char** text);

/// Decodes the sequence at the text to 1 or 2 UTF-16 units, and answers how many. Surrogates and values above
/// 0x10FFFF give U+FFFD. A sequence that the text cuts off is decoded as if zero bits followed.
int Q_Utf8ToUnits(const char* text, char16_t (&units)[2]);

/// Whether the byte continues a sequence (0x80 to 0xBF).
bool Q_IsContinuation(char byte);

}  // namespace ventrix
