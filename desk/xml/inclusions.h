// XInclude in documents for a stylesheet. Strings are UTF-8.
#pragma once

#include <libxml/tree.h>

#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

class NetworkGuard;

/// An include element that stays in the document.
struct FailedInclusion {
    NativePath file;      ///< The file that contains the element.
    int line = 0;         ///< 0 if unknown.
    std::string element;  ///< Its name, href and xpointer.
    std::string reason;   ///< One line.
    NativePath target;    ///< Of its href; empty if that is not a local file.
};

/// Replaces the include elements by what they include, which may include further files. Messages of the
/// parser go to the guard.
std::vector<FailedInclusion> ProcessInclusions(xmlDoc* document, NetworkGuard& guard);

/// Escapes the spaces and the letters outside of ASCII in the href of each include element, in any encoding
/// that contains ASCII: libxml2 takes URIs only.
void EscapeInclusionPaths(std::string& document);

}  // namespace ventrix::desk
