// Cuts a request into tokens and reads its options. The parser is tolerant: it skips what it does not know
// and checks no value. Texts are UTF-8 bytes; only the space separates tokens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "markers/publish_params.h"

namespace ventrix {

/// Copies the next token, without its quotes, into the buffer, cut to capacity - 1 bytes and terminated.
/// Returns the cursor behind the token. At the end of the text the token is empty.
const char* ReadToken(const char* cursor, char* buffer, std::size_t capacity);

/// Appends the pieces between the separators to the list, untrimmed; a trailing separator leaves an empty
/// last piece, and an empty text gives no piece.
void ParseCommaList(std::string_view text, std::list<std::string>& list, char separator);

}  // namespace ventrix
