// Looks over the pages of a published result.
#pragma once

#include <cstddef>
#include <string>

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct PublishedPages {
    std::size_t pages = 0;         ///< Files that end in .html or .htm.
    std::size_t markedValues = 0;  ///< Attribute values other than the tags attributes that hold marker text.
    std::string firstMarkedValue;  ///< "PAGE: <meta content>", the first of them.
    std::size_t markedTexts = 0;   ///< Pages whose text still holds marker text, as those that did not load.
    NativePath firstMarkedText;    ///< The first of these pages.
};

/// Adds what every page below the folder shows, or one file of any name. A transformation may have copied
/// marked text into attribute values, such as page descriptions; there the marker text stays.
void LookOverPages(const NativePath& place, PublishedPages& found);

}  // namespace ventrix::desk
