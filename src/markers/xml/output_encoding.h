// Writes a document in an encoding that may lack some of its characters.
#pragma once

#include <string>

namespace ventrix::xml {

/// Converts a well-formed document from UTF-8 to the named encoding. What the encoding lacks becomes a
/// character reference in text and attribute values; a CDATA section that holds such a character becomes
/// text. Names, comments and processing instructions cannot hold references: if one of them has such a
/// character, the document stays UTF-8, and its XML declaration and `meta` elements name that encoding. False
/// if the encoding is unknown or the conversion fails.
bool EncodeDocument(const std::string& text, const std::string& encoding, std::string& bytes);

}  // namespace ventrix::xml
