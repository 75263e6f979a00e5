// The references that an XML document writes down, in document order: DITA maps and topics, DocBook,
// XInclude, entity files, and `href` in any other vocabulary. Elements are known by name, with or without a
// DTD.
#pragma once

#include <libxml/tree.h>

#include <string>
#include <vector>

namespace ventrix::desk {

struct Reference {
    std::string text;      ///< A URI reference as written; never empty.
    bool graphic = false;  ///< An image, by its element or its extension.
    bool follow = false;   ///< The target may refer to further files: a map, a topic, an included XML file.
    bool optional =
        false;  ///< No part of the document where it is missing: a DTD that may come from elsewhere.
    bool outside = false;  ///< `scope` says that it is no part of the set: external or peer.
};

/// Repeated references stay repeated. References that are a fragment only are left out.
std::vector<Reference> ReferencesOf(xmlDoc* document);

/// True for maps and topics of DITA, specialised ones included.
bool IsDita(const xmlDoc* document);

}  // namespace ventrix::desk
