// What stands in front of the root element: XML declaration, DOCTYPE, comments, processing instructions.
#pragma once

#include <string_view>

namespace ventrix::xml {

/// Where the root's start tag begins; npos if there is none.
std::size_t RootBegin(std::string_view text);

/// True if the prolog is well-formed beyond doubt and declares nothing: a byte-order mark and an XML
/// declaration of the usual form at most, and white space.
bool IsPlainProlog(std::string_view prolog);

}  // namespace ventrix::xml
