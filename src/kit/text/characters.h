// Operations on kit strings that never split a character. The encoding is an index of the registry in
// encodings.h.
#pragma once

#include <cstdint>

namespace ventrix {

/// Bytes of the character at the text; 0 at its end.
std::uint32_t Q_CharacterLength(const char* text, std::int32_t encoding);

/// The length, at most the wanted one, at which the text can be cut between two characters. Lengths are
/// bytes.
std::uint32_t Q_CutPoint(const char* text, std::uint32_t length, std::int32_t encoding);

/// Copies what fits size minus 1 bytes, and terminates. The bytes copied. Null reads as the empty text.
std::uint32_t Q_StrCopyChars(char* destination, const char* text, std::uint32_t size, std::int32_t encoding);

/// Appends what keeps the whole at most size minus 1 bytes. The length afterwards.
std::uint32_t Q_StrCatChars(char* destination, const char* text, std::uint32_t size, std::int32_t encoding);

/// The last occurrence of a one-byte character, not counting bytes inside longer ones. Null if there is none,
/// and for the character 0.
const char* Q_StrFindLastChar(const char* text, int character, std::int32_t encoding);

}  // namespace ventrix
