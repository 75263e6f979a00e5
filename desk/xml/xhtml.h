// Writes a tree that a stylesheet built as HTML as well-formed XHTML, which browsers read as HTML and the
// module reads as XML. Strings are UTF-8.
#pragma once

#include <libxml/tree.h>

#include <string>

namespace ventrix::desk {

/// The page in UTF-8, without an XML declaration, because old browsers stumble over it. Elements that are
/// empty by definition end in " />", all others have an end tag; scripts and styles are readable for both
/// kinds of readers; the encoding is declared in the head. Text that the stylesheet wants unescaped is
/// copied, with HTML's entities as numbers.
std::string XhtmlOf(const xmlDoc* document);

}  // namespace ventrix::desk
