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
    bool excluded = false;      ///< The filter excludes its definition. All strings are empty.
};

/// By name. The first definition counts: that of a map before those of its submaps.
using DitaKeys = std::map<std::string, DitaKey>;

/// Adds the keys that the map itself defines.
void CollectKeys(xmlDoc* map, DitaKeys& keys);

/// Whether the filter excludes the definition of the key, and there is no other.
bool IsExcludedKey(const DitaKeys& keys, const std::string& key);

/// Gives keys that are defined by other keys the target, and the text if they have none.
void ResolveKeyChains(DitaKeys& keys);

/// What a map says about a topic reference in "linktext", "shortdesc" or "searchtitle"; empty if it says
/// nothing there.
std::string MapTextOf(const xmlNode* topicref, const std::string& element);

/// The title that a map gives to a topic reference, in whichever way; empty if it gives none.
std::string NavigationTitle(const xmlNode* topicref);

}  // namespace ventrix::desk
