// The prolog, which precedes the root element: XML declaration, DOCTYPE, comments, processing instructions.
#pragma once

#include <string_view>

namespace ventrix::xml {

/// The position of the root's start tag; npos if there is none.
std::size_t RootBegin(std::string_view text);

/// True if the prolog is certainly well-formed and declares nothing: no more than a byte-order mark, an XML
/// declaration in its usual form, and whitespace.
bool IsPlainProlog(std::string_view prolog);

}  // namespace ventrix::xml
