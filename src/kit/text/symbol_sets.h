// The three symbol sets that a text can be converted from: a mathematical and Greek set, a dingbat set, and a
// set whose characters lie in the private-use range. Each byte stands for one UTF-16 unit.
#pragma once

#include <cstdint>

namespace ventrix {

constexpr char16_t kNoSymbol = 0xFFFF;

/// Whether the encoding code (convert.h) is that of a symbol set.
bool Q_IsSymbolSet(std::int32_t code);

/// The unit for a byte of the set, or kNoSymbol: for bytes without a character, values above 255 and other
/// codes.
char16_t Q_SymbolUnit(std::int32_t code, unsigned byte);

}  // namespace ventrix
