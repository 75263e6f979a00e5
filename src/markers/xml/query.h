// Evaluates XPath over a store's tree, with libxml2 on a copy of the tree that is made when first asked.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "markers/xml/document_store.h"

namespace ventrix::xml {

/// The copy of one document's tree. It holds as long as the tree keeps its shape; texts are brought up to
/// date.
class QueryTree {
  public:
    QueryTree(DocumentStore& store, NodeIndex document);
    ~QueryTree();
    QueryTree(const QueryTree&) = delete;
    QueryTree& operator=(const QueryTree&) = delete;

    /// Whether the copy still has the shape of the tree.
    bool Holds() const;

    /// The selected nodes in document order; nothing for a query that cannot be evaluated or selects no
    /// node-set.
    std::optional<std::vector<NodeIndex>> Select(const std::string& query);

  private:
    struct Copy;
    std::unique_ptr<Copy> copy_;
};

}  // namespace ventrix::xml
