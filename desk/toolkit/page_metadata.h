// What the head of a page says about its topic: authors, keywords, products and dates, from the topic and
// from the map. Strings are UTF-8.
#pragma once

#include <libxml/tree.h>

#include <memory>
#include <string>
#include <vector>

namespace ventrix::desk {

struct MetadataEntry {
    std::string name, content;  ///< Of the page's meta element; plain text.
    std::string source;         ///< The name of the base type that gives it: "author".
    int rank = 0;               ///< The place among the entries of a page, in ascending order.
};

/// What a map says about the topics of a branch.
struct BranchMetadata {
    std::vector<MetadataEntry> entries;
    std::shared_ptr<const BranchMetadata> outer;  ///< What is said about the branch around it; may be null.
};

/// What a map says about one topic.
struct TopicMetadata {
    std::vector<MetadataEntry> own;  ///< Counts for the topic itself only, such as its keywords.
    std::string searchTitle;         ///< Instead of the topic's own; may be empty.
    std::shared_ptr<const BranchMetadata> branch;
};

/// The metadata of a map or of a topic reference within a branch, of which `outer` may be null.
TopicMetadata ReadMapMetadata(const xmlNode* element, std::shared_ptr<const BranchMetadata> outer);

/// The entries for the page of a topic: what the map says, and then what the topic says. Where a page has one
/// place only, for dates, the publisher, the permissions and the source, that of the map counts.
std::vector<MetadataEntry> MetadataOfPage(const xmlNode* topic, const TopicMetadata& inMap);

}  // namespace ventrix::desk
