// Operations on kit strings: zero-terminated bytes in the kit's current encoding, taken as bytes.
// A null source reads as the empty text, and a null destination makes an operation do nothing (and answer 0).
// Operations that know characters stand in characters.h.
#pragma once

#include <cstdint>
#include <memory>

#include "kit/memory.h"

namespace ventrix {

/// A kit string that frees itself.
using Q_String = std::unique_ptr<char, Q_FreeDeleter>;

/// Bytes before the terminator; 0 for null.
std::uint32_t Q_StrLen(const char* text);

/// A copy in kit memory. Null for a null text, and when memory runs out.
char* Q_StrDup(const char* text);

/// Copies and terminates. The caller guarantees the room.
void Q_StrCopy(char* destination, const char* text);

/// Copies at most size minus 1 bytes and terminates, also with size 0. The bytes copied.
std::uint32_t Q_StrCopyN(char* destination, const char* text, std::uint32_t size);

/// Appends and terminates. The caller guarantees the room.
void Q_StrCat(char* destination, const char* text);

/// Appends as much as keeps the whole at most size minus 1 bytes. A destination that is longer already stays.
void Q_StrCatN(char* destination, const char* text, std::uint32_t size);

/// Appends one byte if the length is below size minus 1. The length afterwards.
std::uint32_t Q_StrCatChar(char* destination, char byte, std::uint32_t size);

/// Stores a terminator at the index.
void Q_StrTrunc(char* destination, std::uint32_t index);

/// Exact comparison.
bool Q_StrEqual(const char* first, const char* second);

/// Comparison through the case table.
bool Q_StrIEqual(const char* first, const char* second);

/// The difference of the mapped bytes at the first difference, first minus second, or 0.
int Q_StrICompare(const char* first, const char* second);

/// Whether the text begins with the prefix, exactly. True for an empty or null prefix.
bool Q_StrPrefix(const char* text, const char* prefix);

/// The first occurrence of the byte. Null if there is none, and for the value 0.
const char* Q_StrChr(const char* text, int character);

}  // namespace ventrix
