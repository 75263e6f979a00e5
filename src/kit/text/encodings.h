// The registry of the host's six encodings, and which of them the kit's strings are in. Process-wide state
// without a lock, written only at start-up.
#pragma once

#include <bitset>
#include <cstdint>

namespace ventrix {

/// A host encoding. Two bytes form one character if firstBytes holds the first and secondBytes the second.
struct Q_Encoding {
    const char* name;
    const char* converterName;
    std::bitset<256> firstBytes;
    std::bitset<256> secondBytes;
};

constexpr std::int32_t kEncodingCount = 6;

/// The index of UTF-8, which has no byte pairs; code that steps through text treats it separately.
constexpr std::int32_t kUtf8Encoding = 5;

/// Makes the named encoding current; names are compared with Q_StrIEqual. An unknown name changes nothing.
/// Returns the current index.
std::int32_t Q_SetEncoding(const char* name);

/// Whether Q_SetEncoding was ever called.
bool Q_EncodingsReady();

/// The index of the current encoding; initially 0.
std::int32_t Q_CurrentEncoding();

/// The index of the named encoding; 0 for an unknown or null name.
std::int32_t Q_EncodingIndex(const char* name);

/// The entry with this index; entry 0 for an index out of range.
const Q_Encoding& Q_EncodingAt(std::int32_t index);

/// The entry whose converter has this name; entry 0 if there is none.
const Q_Encoding& Q_EncodingOfConverter(const char* converterName);

/// Whether the two bytes form one double-byte character of the encoding.
bool Q_IsBytePair(const Q_Encoding& encoding, char first, char second);

}  // namespace ventrix
