// XInclude in documents for a stylesheet. Strings are UTF-8.
#pragma once

#include <libxml/tree.h>

#include <string>
#include <vector>

#include "desk/paths/paths.h"
#include "desk/xml/subject.h"

namespace ventrix::desk {

class NetworkGuard;

/// An include element that includes nothing.
struct FailedInclusion {
    NativePath file;      ///< The file that contains the element.
    int line = 0;         ///< 0 if unknown.
    std::string element;  ///< Its name, href and xpointer.
    std::string reason;   ///< One line.
    Subject subject;      ///< Its href, or else its xpointer.
};

/// Replaces the include elements by what they include, which may include further files, and removes those
/// that include nothing. Messages of the parser go to the guard.
std::vector<FailedInclusion> ProcessInclusions(xmlDoc* document, NetworkGuard& guard);

/// Escapes the href of each include element as a URI, which is all that libxml2 takes. The document is in an
/// encoding that contains ASCII; if it declares UTF-16, in UTF-8. A path with a reference to an entity stays.
void EscapeInclusionPaths(std::string& document);

}  // namespace ventrix::desk
