// Where the elements of a published page come from. Strings are UTF-8.
#pragma once

#include <vector>

#include "desk/pages/source_places.h"
#include "desk/pages/tagged_elements.h"

namespace ventrix::desk {

struct ElementOrigin {
    ElementSource place;
    ElementSource reusedBy;  ///< The reference that brought it into the page's topic; no file if none did.
};

/// One origin for each of the page's elements, whose document must still be loaded. `topic` is what the page
/// was made from; empty if that is not known. What could be several places is left out.
std::vector<ElementOrigin> OriginsOf(const std::vector<TaggedElement>& elements, const NativePath& topic,
                                     SourcePlaces& places);

}  // namespace ventrix::desk
