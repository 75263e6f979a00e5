// Pages as text, as another program has serialised them. Strings are UTF-8 unless a function says otherwise.
#pragma once

#include <string>
#include <string_view>

namespace ventrix::desk {

/// HTML as well-formed XML: elements that are empty by definition are closed, attributes have values, and
/// scripts and styles are escaped. The nesting of the elements stays as it is.
std::string WellFormedHtml(std::string_view html);

/// A page of HTML or XHTML, in the encoding that it declares, as the XHTML that XhtmlOf writes. Empty if it
/// is XML of another kind, or cannot be read.
std::string XhtmlOfPage(std::string_view page);

}  // namespace ventrix::desk
