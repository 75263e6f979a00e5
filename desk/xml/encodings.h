// Strings in other encodings than UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ventrix::desk {

/// The name of the encoding that the byte order mark of UTF-16 declares; null without such a mark.
const char* Utf16Encoding(std::string_view text);

/// The text in UTF-8; nothing if the encoding is unknown or the text is not in it.
std::optional<std::string> ToUtf8(std::string_view text, const char* encoding);

/// A text of UTF-8 in the encoding, without a byte order mark; nothing if the encoding is unknown.
std::optional<std::string> FromUtf8(std::string_view text, const char* encoding);

}  // namespace ventrix::desk
