// Navigation as documents for the stylesheet: the table of contents, and a topic's links to its neighbours in
// the map.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "desk/toolkit/dita_map.h"
#include "desk/toolkit/dita_references.h"
#include "desk/toolkit/page_layout.h"

namespace ventrix::desk {

struct Neighbours {
    std::string parent;                 ///< Absolute reference; empty at the top.
    std::vector<std::string> children;  ///< Absolute references, in order.
};

/// By the topic's native path; of a topic that stands in the map twice, the first place counts.
using PageNeighbours = std::unordered_map<std::string, Neighbours>;

PageNeighbours NeighboursIn(const Navigation& navigation);

/// Adds links with the roles "parent" and "child" to the first topic's related links, whose references are
/// absolute.
void AddNeighbours(xmlDoc* document, const PageNeighbours& neighbours, const std::string& topic,
                   DitaLibrary& library);

/// `<contents title="..." language="..."><item href="..." title="..."><item .../></item></contents>`, with
/// references from the page that will hold it. A topic that cannot be read, or is excluded, is no item; what
/// is inside it is.
XmlDocument ContentsDocument(const Navigation& navigation, const PageLayout& layout, const std::string& page,
                             DitaLibrary& library);

}  // namespace ventrix::desk
