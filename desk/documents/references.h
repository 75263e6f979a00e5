// Extracts the references from an XML document in document order: DITA maps and topics, DocBook, XInclude,
// external entities, and `href` in any other vocabulary. Elements are recognised by name or by their DITA
// class, so that no DTD is needed.
#pragma once

#include <libxml/tree.h>

#include <string>
#include <vector>

namespace ventrix::desk {

struct Reference {
    std::string text;       ///< A URI reference as written; never empty.
    bool graphic = false;   ///< An image, by its element or its extension.
    bool follow = false;    ///< The target may refer to further files: a map, a topic, an included XML file.
    bool optional = false;  ///< Left out if the file is missing: a DTD, which may come from a catalog, or an
                            ///< inclusion with a fallback.
    bool dtd = false;       ///< A DTD or a part of one, which may pull in further files.
    bool confined = false;  ///< Becomes part of the text: an external entity, or a file included as text.
    bool opaque = false;    ///< The target is code, text or a download: its markup is not the document's.
    bool relative = true;   ///< Begins neither with a scheme or a drive nor with a slash.
    int line = 0;           ///< Of the referring element or declaration; 0 if unknown.
    bool outside = false;   ///< `scope` is external or peer: not part of the document.
};

/// A repeated reference appears repeatedly. References that consist of a fragment only are left out.
std::vector<Reference> ReferencesOf(xmlDoc* document);

/// True for maps and topics of DITA, including specialised ones.
bool IsDita(const xmlDoc* document);

}  // namespace ventrix::desk
