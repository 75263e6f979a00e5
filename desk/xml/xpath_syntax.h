// The syntax of names and queries. Strings are UTF-8.
#pragma once

#include <string>

namespace ventrix::desk {

/// True for the name of an element or attribute: an NCName, or a prefix and an NCName with a colon between
/// them.
bool IsQualifiedName(const std::string& text);

/// Returns why the text is not an XPath 1.0 expression, in one line; empty if it is one. Prefixes and
/// function names are not checked.
std::string XPathProblem(const std::string& query);

}  // namespace ventrix::desk
