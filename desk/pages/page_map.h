// The map of a result: for each element of its pages that carries data, where it is and where it comes from.
// docs/reading-tags.md describes it, docs/map-schema.json is its schema. Strings are UTF-8.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/pages/element_origins.h"
#include "desk/pages/tagged_elements.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

inline constexpr char kMapName[] = "ventrix-map.json";

struct MappedElement {
    TaggedElement element;
    ElementOrigin origin;
};

struct MappedPage {
    NativePath page;
    NativePath source;  ///< The topic that it was made from; empty if that is not known.
    std::vector<MappedElement> elements;
    std::string problem;       ///< Why the page is not XML, one line; empty if it is.
    int line = 0, column = 0;  ///< Of the problem; 0 if unknown.
};

/// The page with the places of its elements.
MappedPage MapPage(const NativePath& page, const NativePath& source, const CarryingAttributes& names,
                   SourcePlaces& places);

/// The elements of a page as a JSON array. Paths are relative to `document`, with slashes. Nothing in it ends
/// an HTML script element.
std::string PlacesAsJson(const MappedPage& page, const NativePath& document);

/// Names files relative to a folder. Remembers the names, which are slow to compose.
class RelativeNames {
  public:
    explicit RelativeNames(const NativePath& folder) : folder_(ToFilesystem(folder)) {}

    const std::string& Of(const NativePath& file);

  private:
    std::filesystem::path folder_;
    std::map<NativePath, std::string> names_;
    const std::pair<const NativePath, std::string>* latest_ = nullptr;  ///< Mostly the next one, too.
};

/// The text of a map, to which one page after the other is added: a large result has more elements than fit
/// into memory.
class MapText {
  public:
    /// The map's sources are relative to the folder of the document, its pages to `folder`.
    MapText(const NativePath& document, const NativePath& folder);

    void Add(const MappedPage& page);

    /// Writes the map into the folder. False if it cannot be written.
    bool Write();

  private:
    NativePath folder_;
    RelativeNames sources_;
    RelativeNames results_;
    std::string text_;
    bool isFirst_ = true;
};

}  // namespace ventrix::desk
