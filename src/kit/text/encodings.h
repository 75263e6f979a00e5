// The registry of the host's six encodings, and the one that the kit's strings are in.
// Process-wide and unguarded; written at start-up only.
#pragma once

#include <bitset>
#include <cstdint>

namespace ventrix {

/// One host encoding. Two bytes are one character if the first is in firstBytes and the second in
/// secondBytes.
struct Q_Encoding {
    const char* name;
    const char* converterName;
    std::bitset<256> firstBytes;
    std::bitset<256> secondBytes;
};

constexpr std::int32_t kEncodingCount = 6;
constexpr std::int32_t kUtf8Encoding =
    5;  ///< The index of UTF-8, which has rules of its own and no pair tables.

/// Makes the named encoding current, names compared through the case table. An unknown name changes nothing.
/// The current index. Builds the registry if it is not there.
std::int32_t Q_SetEncoding(const char* name);

/// Whether an encoding was ever selected.
bool Q_EncodingsReady();

/// The index of the current encoding: 0 at load.
std::int32_t Q_CurrentEncoding();

/// The index of the named encoding; 0 for an unknown or null name.
std::int32_t Q_EncodingIndex(const char* name);

/// The entry with this index; the entry 0 for any other number.
const Q_Encoding& Q_EncodingAt(std::int32_t index);

/// The entry whose converter has this name; the entry 0 if there is none.
const Q_Encoding& Q_EncodingOfConverter(const char* converterName);

/// Whether two bytes are one double-byte character of the encoding.
bool Q_IsBytePair(const Q_Encoding& encoding, char first, char second);

}  // namespace ventrix
