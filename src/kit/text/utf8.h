// Reading UTF-8 one sequence at a time. Text is zero-terminated.
#pragma once

#include <cstdint>

namespace ventrix {

/// Whether every sequence has a lead byte from 0xC2 to 0xF4 and all its continuation bytes. Overlong forms
/// and surrogates are accepted. False for null, true for the empty string.
bool Q_IsValidUtf8(const char* text);

/// The length in bytes, 1 to 4, of the sequence that the lead byte begins; 1 for an invalid lead byte.
std::uint32_t Q_Utf8Length(char lead);

/// Moves the pointer past one character, but never past the terminator.
void Q_Utf8Next(const char** text);

/// Decodes the sequence at the text into UTF-16 and returns the number of units, 1 or 2. Surrogates and
/// values above 0x10FFFF give U+FFFD. A sequence cut off by the terminator is decoded as if zero bits
/// followed.
int Q_Utf8ToUnits(const char* text, char16_t (&units)[2]);

/// Whether the byte is a continuation byte (0x80 to 0xBF).
bool Q_IsContinuation(char byte);

}  // namespace ventrix
