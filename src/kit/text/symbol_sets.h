// The three symbol sets from which text can be converted: mathematical and Greek symbols, dingbats, and a set
// whose characters lie in the private-use range. Each byte is one UTF-16 unit.
#pragma once

#include <cstdint>

namespace ventrix {

/// The result for a byte that the set does not define.
constexpr char16_t kNoSymbol = 0xFFFF;

/// Whether the encoding code (convert.h) is one of the symbol sets.
bool Q_IsSymbolSet(std::int32_t code);

/// The unit of a byte in the set. kNoSymbol for undefined bytes, values above 255 and other codes.
char16_t Q_SymbolUnit(std::int32_t code, unsigned byte);

}  // namespace ventrix
