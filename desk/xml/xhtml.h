// Writes a tree that a stylesheet built as HTML as well-formed XHTML, which browsers read as HTML and the
// module reads as XML. Strings are UTF-8.
#pragma once

#include <libxml/tree.h>

#include <string>
#include <string_view>

namespace ventrix::desk {

/// The page in UTF-8, without an XML declaration, because old browsers stumble over it. Elements that are
/// empty by definition end in " />", all others have an end tag; scripts and styles are readable for both
/// kinds of readers; the encoding is declared in the head. Text that the stylesheet wants unescaped is
/// copied, with HTML's entities as numbers.
std::string XhtmlOf(const xmlDoc* document);

/// Whether the element is empty by definition, such as br. Case does not count.
bool IsEmptyHtmlElement(std::string_view name);

/// Appends text with markup. XML does not know HTML's entities, so that they become numbers, and an "&" that
/// begins none is escaped.
void AppendMarkup(std::string& page, std::string_view html);

}  // namespace ventrix::desk
