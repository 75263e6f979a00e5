// What the keys of a DITA map stand for. References are absolute URIs; strings are UTF-8.
#pragma once

#include <libxml/tree.h>

#include <map>
#include <string>

namespace ventrix::desk {

struct DitaKey {
    std::string href;  ///< Empty for a key that stands for text only.
    std::string text;
    std::string format, scope;  ///< As the map says; may be empty.
    std::string keyref;         ///< The key that this one stands for, until it is resolved.
};

/// By name. The first definition counts: that of a map before those of its submaps.
using DitaKeys = std::map<std::string, DitaKey>;

/// Adds the keys that the map itself defines.
void CollectKeys(xmlDoc* map, DitaKeys& keys);

/// Gives keys that are defined by other keys the target, and the text if they have none.
void ResolveKeyChains(DitaKeys& keys);

/// The text that a map gives to links to a topic reference; empty if it gives none.
std::string LinkTextOf(const xmlNode* topicref);

/// The title that a map gives to a topic reference, in whichever way; empty if it gives none.
std::string NavigationTitle(const xmlNode* topicref);

}  // namespace ventrix::desk
