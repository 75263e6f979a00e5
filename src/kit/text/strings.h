// Operations on kit strings: zero-terminated bytes in the kit's current encoding, treated as bytes;
// characters.h has the operations that respect characters. A null source reads as the empty string. With a
// null destination an operation does nothing and returns 0. Lengths and sizes are in bytes.
#pragma once

#include <cstdint>
#include <memory>

#include "kit/memory.h"

namespace ventrix {

/// Owns a kit string.
using Q_String = std::unique_ptr<char, Q_FreeDeleter>;

/// The length without the terminator; 0 for null.
std::uint32_t Q_StrLen(const char* text);

/// A copy in kit memory. Null for null, and when memory runs out.
char* Q_StrDup(const char* text);

/// Copies and terminates. The caller makes sure that the destination is large enough.
void Q_StrCopy(char* destination, const char* text);

/// Copies at most size minus 1 bytes and always terminates, even with a size of 0. Returns the bytes copied.
std::uint32_t Q_StrCopyN(char* destination, const char* text, std::uint32_t size);

/// Appends and terminates. The caller makes sure that the destination is large enough.
void Q_StrCat(char* destination, const char* text);

/// Appends as many bytes as keep the result within size minus 1 bytes. A destination that is already longer
/// does not change.
void Q_StrCatN(char* destination, const char* text, std::uint32_t size);

/// Appends one byte if the length is below size minus 1. Returns the new length.
std::uint32_t Q_StrCatChar(char* destination, char byte, std::uint32_t size);

/// Stores a terminator at the index.
void Q_StrTrunc(char* destination, std::uint32_t index);

/// Exact comparison of the bytes.
bool Q_StrEqual(const char* first, const char* second);

/// Comparison of the bytes after Q_FoldByte.
bool Q_StrIEqual(const char* first, const char* second);

/// At the first byte that differs after Q_FoldByte, the folded byte of the first string minus that of the
/// second; 0 if there is none.
int Q_StrICompare(const char* first, const char* second);

/// Whether the text begins with the prefix, compared exactly. True for an empty or null prefix.
bool Q_StrPrefix(const char* text, const char* prefix);

/// The first occurrence of the byte. Null if there is none, and for the value 0.
const char* Q_StrChr(const char* text, int character);

/// The lower-case form that the byte has in the Mac OS Roman character set, on which the host Roman encoding
/// is based; the byte itself if it has none. The table is applied to raw bytes in any encoding: in UTF-8 it
/// folds ASCII letters as expected, and also some bytes of longer sequences.
unsigned char Q_FoldByte(unsigned char byte);

}  // namespace ventrix
