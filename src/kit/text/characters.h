// Operations on kit strings that never split a character. `encoding` is an index of the registry in
// encodings.h. Lengths and sizes are in bytes. A null source reads as the empty string.
#pragma once

#include <cstdint>

namespace ventrix {

/// The length of the character at the start of the text; 0 at the terminator.
std::uint32_t Q_CharacterLength(const char* text, std::int32_t encoding);

/// The greatest length up to `length` at which the text can be cut between two characters. A text that is
/// not longer than `length` gives `length` itself.
std::uint32_t Q_CutPoint(const char* text, std::uint32_t length, std::int32_t encoding);

/// Copies as many whole characters as fit into size minus 1 bytes, and terminates. Returns the bytes copied.
std::uint32_t Q_StrCopyChars(char* destination, const char* text, std::uint32_t size, std::int32_t encoding);

/// Appends as many whole characters as keep the result within size minus 1 bytes. Returns the new length.
std::uint32_t Q_StrCatChars(char* destination, const char* text, std::uint32_t size, std::int32_t encoding);

/// The last occurrence of a one-byte character; bytes inside longer characters do not count. Null if there
/// is none, and for the character 0.
const char* Q_StrFindLastChar(const char* text, int character, std::int32_t encoding);

}  // namespace ventrix
