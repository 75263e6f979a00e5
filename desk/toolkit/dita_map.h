// The navigation that a DITA map and its submaps describe: topics in order and depth, the keys, and which
// topics are related. References are absolute URIs; strings are UTF-8.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "desk/toolkit/dita_keys.h"
#include "desk/toolkit/dita_library.h"
#include "desk/toolkit/dita_run.h"
#include "desk/toolkit/page_metadata.h"

namespace ventrix::desk {

/// In which directions a map links a topic.
struct Linking {
    bool from = true;  ///< The topic has links.
    bool to = true;    ///< Others link to it.
};

/// How the topics below one are linked with each other.
enum class CollectionType { kUnordered, kSequence, kFamily };

struct NavigationItem {
    std::string href;  ///< Absolute reference or web address; empty for a heading or a group without a title.
    std::string title;          ///< From the map; empty if the topic's own title is used.
    bool titleLocked = false;   ///< The map's title is used instead of the topic's.
    std::string linkText;       ///< For links of the map to it, instead of its title; may be empty.
    std::string description;    ///< Likewise, instead of its short description.
    bool page = false;          ///< The reference leads to a local topic that gets a page.
    bool shown = true;          ///< Appears in the table of contents.
    bool resourceOnly = false;  ///< There for its keys or for reuse only.
    Linking linking;
    CollectionType collection = CollectionType::kUnordered;
    TopicMetadata metadata;
    std::vector<NavigationItem> children;
};

/// A row of a relationship table: each topic is linked with those of the other cells.
struct Relation {
    std::vector<NavigationItem> cells;  ///< Without references; the topics are below them.
};

struct Navigation {
    std::string title;
    std::string language;
    std::vector<NavigationItem> items;
    std::vector<Relation> relations;
    DitaKeys keys;
    std::set<NativePath> excludedTopics;  ///< Of the topic references that the filter excludes.
};

/// Reads the map and its submaps, each once. A submap that is missing, not well-formed or contains itself is
/// reported as unread or as a finding of the run and left out, and so is what a topic reference refers to by
/// an undefined key.
Navigation ReadNavigation(const NativePath& map, DitaLibrary& library, const DitaRun& run);

}  // namespace ventrix::desk
