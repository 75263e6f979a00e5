// Loads as much of an XML document as can be read: an undeclared entity is not an error, DTDs come from local
// files and the XML catalogs only, and nothing is fetched from a network. Strings are UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "desk/paths/paths.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {

struct UndeclaredPrefix {
    std::string prefix;
    int line = 0;  ///< Where the tag ends that uses it first.
};

struct LenientDocument {
    XmlDocument document;       ///< What could be read; null if there is not even a root element.
    bool wellFormed = false;    ///< True too if undeclared entities are the only errors.
    std::string reason;         ///< The first error, one line, with its line number; empty if well-formed.
    int line = 0, column = 0;   ///< Of the first error; 0 if unknown.
    bool beyondLimits = false;  ///< The document exceeds a limit of limits.h, which `reason` names.
    std::vector<std::string> undeclaredEntities;  ///< One message for each, in document order.

    /// Namespace prefixes that are used and not declared, each once. Empty if the document names a DTD, which
    /// may declare them.
    std::vector<UndeclaredPrefix> undeclaredPrefixes;

    /// Device and file number, which are the same for all names of a file; zeros if it could not be opened.
    std::pair<std::uint64_t, std::uint64_t> identity;
};

/// What the document is loaded for. A DTD is large, so it is read only for the purposes that need it.
enum class LoadFor {
    kListing,     ///< Entities stay references; the DTD is read only if an entity is undeclared without it.
    kDita,        ///< Entities are expanded; the DTD is read only if an entity is undeclared without it.
    kStylesheet,  ///< Entities are expanded, CDATA sections become text nodes, and the DTD's default
                  ///< attributes are added.
};

/// The line of an entity's declaration in a document from LoadLeniently; 0 if it is not in the document
/// itself.
int DeclarationLine(const xmlEntity& entity);

/// Whether the DOCTYPE names an external DTD. False for null.
bool NamesExternalDtd(const xmlDoc* document);

/// If the file is missing, or is a folder or a device, `document` is null and `reason` says so.
LenientDocument LoadLeniently(const NativePath& path, LoadFor purpose = LoadFor::kListing);

}  // namespace ventrix::desk
