// The attributes in the text of a document that is not parsed: a scan of its bytes, in any encoding that
// contains ASCII. What looks like an attribute in a comment or in text counts too.
#pragma once

#include <string_view>
#include <vector>

namespace ventrix::desk {

/// Views of the scanned text.
struct AttributeInText {
    std::string_view name;   ///< Without its prefix.
    std::string_view value;  ///< As written, up to the first quote, "&" or "<".
};

/// The attributes in the order of the text, with those of elements in marker text.
std::vector<AttributeInText> AttributesIn(std::string_view text);

}  // namespace ventrix::desk
