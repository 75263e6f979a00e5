// Loads an XML document as far as it can be read: entities that nobody declares are no failure, DTDs come
// from local files and the XML catalogs only, and nothing is fetched from a network. Paths are native.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "desk/paths/paths.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {

struct LenientDocument {
    XmlDocument document;     ///< What could be read; null if not even a root element.
    bool wellFormed = false;  ///< True too if undeclared entities are all that is wrong.
    std::string reason;       ///< Of the first fault, one line, with its line number; empty if well-formed.
    std::vector<std::string> undeclaredEntities;  ///< One message each, in order.
    std::pair<std::uint64_t, std::uint64_t>
        identity;  ///< Device and file number; zeros if it could not be opened.
};

enum class LoadFor {
    kListing,     ///< Entities stay references; the DTD is read only if the document uses an entity that it
                  ///< lacks.
    kDita,        ///< Entities are expanded; the DTD is read only if needed, as it is large.
    kStylesheet,  ///< Entities are expanded, CDATA sections are text, and the DTD's default attributes are
                  ///< there.
};

/// A missing file, a folder or a device gives no document and the reason.
LenientDocument LoadLeniently(const NativePath& path, LoadFor purpose = LoadFor::kListing);

}  // namespace ventrix::desk
