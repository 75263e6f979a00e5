// The navigation that a DITA map describes, sub-maps pulled in: topics in order and depth, and the keys.
// Paths are native; references are absolute.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "desk/toolkit/ditaval.h"
#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

struct NavigationItem {
    std::string href;   ///< Absolute reference or web address; empty for a heading without a page.
    std::string title;  ///< As the map gives it; empty if the topic's own title counts.
    bool page = false;  ///< The reference is to a local topic that gets a page.
    bool shown = true;  ///< Stands in the table of contents.
    std::vector<NavigationItem> children;
};

/// What a key stands for. The first definition in the map counts.
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

/// A sub-map that is missing, broken or a part of itself is a warning.
Navigation ReadNavigation(const NativePath& map, const Ditaval& rules, const MessageSink& warnings);

}  // namespace ventrix::desk
