// The pages of a published result: which there are, whether marker text is left in them, and which file each
// was made from.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct PublishedPages {
    std::vector<NativePath> files;  ///< Those that end in .html or .htm, by name.
    std::size_t markedValues = 0;   ///< Attribute values with marker text, except tags attributes.
    std::string firstMarkedValue;   ///< The first of them, as "PAGE: <meta content>".
    std::vector<NativePath>
        markedTexts;  ///< Pages with marker text in text nodes, as those that failed to load.
};

/// Adds the counts of every page below a folder, or of a single file whatever its name. Marker text in
/// attribute values comes from a transformation that copies text there, for example into page descriptions;
/// it is not decoded.
void InspectPages(const NativePath& place, PublishedPages& found);

/// Finds the files that the pages of a DITA transformation were made from. Toolkits name a page after its
/// topic and put it where the topic lies in relation to the map.
class PageSources {
  public:
    /// The result folder corresponds to the folder of the document.
    PageSources(const std::vector<NativePath>& sources, const NativePath& document,
                const NativePath& resultFolder);

    /// Empty if no file or more than one has the name of the page.
    NativePath SourceOf(const NativePath& page) const;

  private:
    std::filesystem::path resultFolder_;
    std::map<std::string, NativePath> byStem_;  ///< By the path below the document's folder, no extension.
};

}  // namespace ventrix::desk
