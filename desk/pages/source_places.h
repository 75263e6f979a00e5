// Where the text of a page is in the sources of the document. Strings are UTF-8.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
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

/// A source with what is looked up in it.
struct SourceFile {
    LenientDocument loaded;
    std::unordered_map<std::string, const xmlNode*> elements;  ///< By XPath, as Ventrix writes it.

    /// The first element that reuses an element of another file, by that file and its id.
    std::map<std::pair<NativePath, std::string>, ElementSource> references;
    std::vector<NativePath> reused;  ///< The files of these elements, as far as they are the document's.
};

/// The sources of a document. Each is loaded when it is needed first.
class SourcePlaces {
  public:
    /// `files` are the document's XML files. `document` is what source paths are relative to.
    SourcePlaces(std::vector<NativePath> files, const NativePath& document);

    /// The place that an element comes from, if it names none: the first of `likely`, or of the files that
    /// they reuse, in which the element's XPath leads to an element that has, or inherits, the attributes
    /// with their values.
    ElementSource PlaceOf(const TaggedElement& element, const std::vector<NativePath>& likely);

    /// The element of the file whose content reference brings the place into it; no file if there is none.
    ElementSource ReferenceTo(const ElementSource& place, const NativePath& file);

    /// The file with this path, relative to the document; empty if it is not one of the document's.
    NativePath FileOf(const std::string& sourcePath) const;

    /// Forgets what was loaded if it is much. Between pages, so that a page does not load a file twice.
    void LimitMemory();

  private:
    const SourceFile& Load(const NativePath& file);
    const xmlNode* Find(const NativePath& file, const std::string& xpath);
    bool IsDocuments(const NativePath& file) const;

    std::vector<NativePath> files_;  ///< Sorted.
    NativePath folder_;
    std::map<NativePath, SourceFile> loaded_;
    std::size_t elements_ = 0;                                           ///< In all of them.
    std::map<NativePath, SourceFile>::iterator latest_ = loaded_.end();  ///< Mostly the next one, too.
};

}  // namespace ventrix::desk
