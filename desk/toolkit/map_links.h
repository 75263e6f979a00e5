// The links that a map gives a topic, to its parent, its children and others, as elements of the topic.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "desk/toolkit/dita_library.h"
#include "desk/toolkit/dita_map.h"

namespace ventrix::desk {

/// A link that the map gives a topic.
struct MapLink {
    std::string role;         ///< parent, child, previous, next or friend.
    std::string href;         ///< Absolute.
    std::string text;         ///< Instead of the topic's title; may be empty.
    std::string title;        ///< For a target that has no title of its own; may be empty.
    std::string description;  ///< Instead of the topic's short description; may be empty.
    bool page = true;         ///< The target is a topic.
};

/// By the topic's path, in the order of the map: all its places count, those in relationship tables too.
using MapLinks = std::map<NativePath, std::vector<MapLink>>;

MapLinks MapLinksOf(const Navigation& navigation);

/// Adds absolute links to the related links of the document's first topic.
void AddMapLinks(xmlDoc* document, const MapLinks& mapLinks, const NativePath& topic, DitaLibrary& library);

}  // namespace ventrix::desk
