// Brings a file's bytes into UTF-8 and back into the encoding that the file had.
#pragma once

#include <string>
#include <string_view>

#include "platform/memory.h"

namespace ventrix::xml {

struct DecodedSource {
    platform::Bytes text;  ///< UTF-8; a byte-order mark stays in front.
    std::string encoding;  ///< The file's encoding; empty if it is UTF-8.
    std::string problem;   ///< One line if the bytes cannot be read in their encoding; else empty.
};

/// Decides by the byte-order mark, the first bytes and the XML declaration, in this order.
DecodedSource DecodeSource(platform::Bytes bytes);

/// UTF-8 in the named encoding; characters that it lacks become character references. False if it is not
/// known.
bool EncodeSource(const std::string& text, const std::string& encoding, std::string& bytes);

}  // namespace ventrix::xml
