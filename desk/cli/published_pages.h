// Inspects the pages of a published result for marker text that was not decoded.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct PublishedPages {
    std::vector<NativePath> files;  ///< Those that end in .html or .htm, by name.
    std::size_t markedValues = 0;   ///< Attribute values with marker text, except tags attributes.
    std::string firstMarkedValue;   ///< The first of them, as "PAGE: <meta content>".
    std::size_t markedTexts = 0;    ///< Pages with marker text in text nodes, as those that failed to load.
    NativePath firstMarkedText;     ///< The first of these pages.
};

/// Adds the counts of every page below a folder, or of a single file whatever its name. Marker text in
/// attribute values comes from a transformation that copies text there, for example into page descriptions;
/// it is not decoded.
void InspectPages(const NativePath& place, PublishedPages& found);

}  // namespace ventrix::desk
