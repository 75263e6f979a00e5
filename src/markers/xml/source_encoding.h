// Converts a file's bytes to UTF-8, and back to the encoding of the file.
#pragma once

#include <string>
#include <string_view>

#include "platform/memory.h"

namespace ventrix::xml {

struct DecodedSource {
    platform::Bytes text;  ///< UTF-8; a byte-order mark is kept.
    std::string encoding;  ///< The file's encoding; empty if it is UTF-8.
    std::string problem;   ///< One line if the bytes cannot be converted; else empty.
};

/// The byte-order mark, the first bytes and the XML declaration decide on the encoding, in this order.
DecodedSource DecodeSource(platform::Bytes bytes);

/// True if the named encoding has all characters of the text, which is UTF-8.
bool CanEncode(std::string_view text, const std::string& encoding);

/// Converts UTF-8 to the named encoding, which must have all characters of the text. False if the encoding is
/// unknown or the conversion fails.
bool EncodeSource(const std::string& text, const std::string& encoding, std::string& bytes);

}  // namespace ventrix::xml
