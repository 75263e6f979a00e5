// The navigation that a DITA map and its submaps describe: topics in order and depth, and the keys.
// References are absolute URIs; strings are UTF-8.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "desk/toolkit/ditaval.h"
#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

struct NavigationItem {
    std::string href;   ///< Absolute reference or web address; empty for a heading without a page.
    std::string title;  ///< From the map; empty if the topic's own title is used.
    bool page = false;  ///< The reference leads to a local topic that gets a page.
    bool shown = true;  ///< Appears in the table of contents.
    std::vector<NavigationItem> children;
};

/// What a key is defined as. The first definition in the map counts.
struct DitaKey {
    std::string href;
    std::string text;
};

struct Navigation {
    std::string title;
    std::string language;
    std::vector<NavigationItem> items;
    std::map<std::string, DitaKey> keys;
};

/// A submap that is missing, not well-formed or contains itself is reported as a warning and left out.
Navigation ReadNavigation(const NativePath& map, const Ditaval& rules, const MessageSink& warnings);

}  // namespace ventrix::desk
