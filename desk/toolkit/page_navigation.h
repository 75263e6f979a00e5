// The links that a map gives a topic, to its parent, its children and others, as elements of the topic.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "desk/toolkit/dita_map.h"
#include "desk/toolkit/dita_references.h"

namespace ventrix::desk {

/// A link that the map gives a topic.
struct MapLink {
    std::string role;   ///< parent, child, previous, next, sibling or friend.
    std::string href;   ///< Absolute.
    std::string title;  ///< For what is no topic, or instead of the topic's title; may be empty.
    bool page = true;   ///< The target is a topic.
};

/// By the topic's path, in the order of the page; if the map refers to a topic twice, the first place counts.
using PageNeighbours = std::map<NativePath, std::vector<MapLink>>;

PageNeighbours NeighboursIn(const Navigation& navigation);

/// Adds absolute links to the related links of the document's first topic.
void AddNeighbours(xmlDoc* document, const PageNeighbours& neighbours, const NativePath& topic,
                   DitaLibrary& library);

}  // namespace ventrix::desk
