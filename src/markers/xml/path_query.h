// Queries that are simple location paths, like //section[@id]/p[@audience='expert']. They are matched on the
// tree itself in one walk, while any other query needs a copy of the tree.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "markers/xml/document_store.h"

namespace ventrix::xml {

struct PathStep {
    bool atAnyDepth = false;     ///< After "//": below the element of the step before; else its child.
    std::string_view name;       ///< "*" for any.
    std::string_view attribute;  ///< That the element must have; empty for none.
    std::optional<std::string_view> value;  ///< Of the attribute; nothing for any.
};

/// The steps of an absolute path of element names without prefixes, each with at most one predicate for an
/// attribute. Nothing for any other query.
std::optional<std::vector<PathStep>> ParsePath(std::string_view query);

/// The elements below the document node that the path selects, in document order. No element may be in a
/// namespace or in an entity.
std::vector<NodeIndex> SelectByPath(DocumentStore& store, NodeIndex document,
                                    const std::vector<PathStep>& steps);

}  // namespace ventrix::xml
