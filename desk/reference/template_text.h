// Fills in a template of a man page, a completion or a document: parts such as "@man-options publish@" are
// replaced by text that is made from the definitions of the options. Strings are UTF-8.
#pragma once

#include <string>

namespace ventrix::desk {

/// The template with its parts replaced; the text of each ends without a line end. Throws
/// std::invalid_argument for an unknown part.
std::string FillTemplate(const std::string& text);

}  // namespace ventrix::desk
