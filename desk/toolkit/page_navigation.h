// Navigation as documents for the stylesheet: the table of contents, and a topic's links to its neighbours in
// the map.
#pragma once

#include <map>
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

/// By the topic's path; of a topic that stands in the map twice, the first place counts.
using PageNeighbours = std::map<NativePath, Neighbours>;

PageNeighbours NeighboursIn(const Navigation& navigation);

/// Adds links with the roles "parent" and "child" to the first topic's related links, whose references are
/// absolute.
void AddNeighbours(xmlDoc* document, const PageNeighbours& neighbours, const NativePath& topic,
                   DitaLibrary& library);

/// `<contents title="..." language="..."><item href="..." title="..."><item .../></item></contents>`, with
/// references from the page that will hold it. A topic that cannot be read, or is excluded, is no item; what
/// is inside it is.
XmlDocument ContentsDocument(const Navigation& navigation, const PageLayout& layout, const NativePath& page,
                             DitaLibrary& library);

}  // namespace ventrix::desk
