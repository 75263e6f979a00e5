// Where the text of a page is in the sources of the document. Strings are UTF-8.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "desk/pages/tagged_elements.h"
#include "desk/paths/paths.h"
#include "desk/xml/lenient_load.h"

namespace ventrix::desk {

/// A place in a source.
struct ElementSource {
    NativePath file;    ///< Empty if it is not known.
    std::string xpath;  ///< Empty if it is not known.
    int line = 0;       ///< 0 if it is not known.
};

/// The sources of a document. Each is loaded when it is needed first.
class SourcePlaces {
  public:
    /// `files` are the document's XML files. `document` is what source paths are relative to.
    SourcePlaces(std::vector<NativePath> files, const NativePath& document);

    /// The place that an element comes from. `likely` are the files to look into first. A file counts if the
    /// element's XPath leads to an element of it that has, or inherits, the attributes with their values.
    ElementSource PlaceOf(const TaggedElement& element, const std::vector<NativePath>& likely);

    /// The element of the file whose content reference brings the place into it; no file if there is none.
    ElementSource ReferenceTo(const ElementSource& place, const NativePath& file);

    /// The file with this path, relative to the document; empty if it is not one of the document's.
    NativePath FileOf(const std::string& sourcePath) const;

  private:
    xmlNode* Find(const NativePath& file, const std::string& xpath);
    const xmlDoc* Load(const NativePath& file);

    std::vector<NativePath> files_;
    NativePath folder_;
    std::map<NativePath, LenientDocument> loaded_;
};

}  // namespace ventrix::desk
