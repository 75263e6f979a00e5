// Evaluates XPath over a store's tree, with libxml2 on a copy of the tree.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "markers/xml/document_store.h"

namespace ventrix::xml {

/// The copy of one document's tree. It is usable as long as the tree keeps its shape; changes of content are
/// carried over before each query.
class QueryTree {
  public:
    QueryTree(DocumentStore& store, NodeIndex document);
    ~QueryTree();
    QueryTree(const QueryTree&) = delete;
    QueryTree& operator=(const QueryTree&) = delete;

    /// False once the shape of the tree has changed.
    bool IsUsable() const;

    /// The selected nodes in document order, 0 for one that has no counterpart in the store. Nothing for a
    /// query that cannot be evaluated or does not yield nodes.
    std::optional<std::vector<NodeIndex>> Select(const std::string& query);

  private:
    struct Copy;
    std::unique_ptr<Copy> copy_;
};

}  // namespace ventrix::xml
