// The markup in the text of a document that is not parsed: scans of its bytes, in any encoding that contains
// ASCII.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace ventrix::desk {

/// The length of the tag that the text begins with, up to and with its ">". Quoted values may contain a ">".
/// All of the text if the tag has no end.
std::size_t TagLength(std::string_view text);

/// Views of the scanned text.
struct AttributeInText {
    std::string_view name;   ///< Without its prefix.
    std::string_view value;  ///< As written, up to the first quote, "&" or "<".
};

/// The attributes in the order of the text, with those of elements in marker text. What looks like an
/// attribute in a comment or in text counts too.
std::vector<AttributeInText> AttributesIn(std::string_view text);

}  // namespace ventrix::desk
