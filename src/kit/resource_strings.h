// The module's fixed wording: strings of its resources by number, in the kit's current encoding.
#pragma once

#include <cstdint>

namespace ventrix {

/// Stores the handle of the module whose strings are loaded. With null, the initial value, no string is
/// found.
void Q_SetResourceModule(void* module);

/// Loads the string into the buffer and expands its byte escapes. A string that is too long is cut between
/// two characters. `size` is the buffer's size in bytes, terminator included. 0, or 1 and the empty string if
/// there is no such string.
int Q_LoadResourceString(std::uint32_t id, char* buffer, std::uint32_t size);

/// Replaces each "%L", "%M" or "%B" followed by two hexadecimal digits, in place. "%L41" is the byte 0x41.
/// "%M" and "%B" give the same raw byte, except that with UTF-8 current, "%M" gives the character that the
/// byte has in the host Roman encoding, and "%B" the one that it has in the system encoding (language.h).
/// Everything else stays. Null is allowed.
void Q_ExpandByteEscapes(char* text);

}  // namespace ventrix
