// The map of a result: for each element of its pages that carries data, where it is and where it comes from.
// docs/reading-tags.md describes it, docs/map-schema.json is its schema. Strings are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/pages/source_places.h"
#include "desk/pages/tagged_elements.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

inline constexpr char kMapName[] = "ventrix-map.json";

struct MappedElement {
    TaggedElement element;
    ElementSource place;
    ElementSource reusedBy;  ///< The reference that brought it into the page's topic; no file if none did.
};

struct MappedPage {
    NativePath page;
    NativePath source;  ///< The topic that it was made from; empty if that is not known.
    std::vector<MappedElement> elements;
    bool isReadable = false;  ///< False if the page is not XML.
};

/// The page with the places of its elements. A page that is not XML is a finding.
MappedPage MapPage(const NativePath& page, const NativePath& source, const CarryingAttributes& names,
                   SourcePlaces& places, std::vector<Finding>& findings);

/// The elements of a page as a JSON array. Paths are relative to `document`, with slashes. Nothing in it ends
/// an HTML script element.
std::string PlacesAsJson(const MappedPage& page, const NativePath& document);

/// Writes the map of all pages into the folder, which the names of the pages are relative to. False if it
/// cannot be written.
bool WriteMap(const std::vector<MappedPage>& pages, const NativePath& document, const NativePath& folder);

}  // namespace ventrix::desk
