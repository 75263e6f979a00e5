// Navigation as input of the stylesheet: the table of contents as a document, and links from a topic to its
// parent and children in the map as elements of the topic.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "desk/toolkit/dita_map.h"
#include "desk/toolkit/dita_references.h"
#include "desk/toolkit/page_layout.h"

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

/// `<contents title="..." language="..."><item href="..." title="..."><item .../></item></contents>`, with
/// references relative to the page that will contain it. A topic without one of the `written` pages gets no
/// item; its children take its place.
XmlDocument ContentsDocument(const Navigation& navigation, const PageLayout& layout, const NativePath& page,
                             const std::set<NativePath>& written, DitaLibrary& library);

}  // namespace ventrix::desk
