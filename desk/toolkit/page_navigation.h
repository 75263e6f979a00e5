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

struct Neighbours {
    std::string parent;                 ///< Absolute reference; empty at the top.
    std::vector<std::string> children;  ///< Absolute references, in order.
};

/// By the topic's path; if the map refers to a topic twice, the first place counts.
using PageNeighbours = std::map<NativePath, Neighbours>;

PageNeighbours NeighboursIn(const Navigation& navigation);

/// Adds absolute links with the roles "parent" and "child" to the related links of the document's first
/// topic.
void AddNeighbours(xmlDoc* document, const PageNeighbours& neighbours, const NativePath& topic,
                   DitaLibrary& library);

/// `<contents title="..." language="..."><item href="..." title="..."><item .../></item></contents>`, with
/// references relative to the page that will contain it. A topic without one of the `written` pages gets no
/// item; its children take its place.
XmlDocument ContentsDocument(const Navigation& navigation, const PageLayout& layout, const NativePath& page,
                             const std::set<NativePath>& written, DitaLibrary& library);

}  // namespace ventrix::desk
