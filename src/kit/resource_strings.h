// The module's fixed wording: strings of its resources by number, in the kit's current encoding.
#pragma once

#include <cstdint>

namespace ventrix {

/// Stores the handle of the module whose strings are loaded. Null at load: no string is found.
void Q_SetResourceModule(void* module);

/// Loads the string into the buffer, cut between two characters where it is too long, with its byte escapes
/// expanded. size is the buffer's bytes, the terminator included. 0, or 1 and the empty text if there is no
/// such string.
int Q_LoadResourceString(std::uint32_t id, char* buffer, std::uint32_t size);

/// Replaces each "%L", "%M" or "%B" with two hexadecimal digits in place: "%L41" is the byte 0x41; with UTF-8
/// current,
/// "%M" and "%B" give the byte's character of the host Roman encoding. Anything else stays. Null is allowed.
void Q_ExpandByteEscapes(char* text);

}  // namespace ventrix
