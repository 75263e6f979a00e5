// Has libxml2 parse a text, to find out whether it is well-formed and what its DTD declares.
#pragma once

#include <string>
#include <string_view>

#include "markers/xml/libxml.h"

namespace ventrix::xml {

struct ParseResult {
    std::string reason;  ///< One line; empty for a well-formed document.
    XmlDocument dtd;     ///< The declarations, without content; null if there are none or the parse failed.
};

/// `text` is UTF-8, whatever its XML declaration says, and a NUL follows it. Relative system ids refer to the
/// folder of `nativePath`, which may be empty. The external DTD is read only with `resolveExternals`, and
/// only from local files. For a reference to an undeclared entity the reason contains the words "undefined
/// entity".
ParseResult ParseWithLibxml(std::string_view text, const std::string& nativePath, bool resolveExternals);

}  // namespace ventrix::xml
