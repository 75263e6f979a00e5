// Stamps that record where a published text came from: an XPath, the source file, a preserved query. They are
// ordinary entries of an attribute group, so the decoding walk treats them like any others.
//
// An XPath numbers each element among its siblings of the same name. Counting siblings and climbing to the
// root for every text node would take quadratic time in wide or deep documents. StampState therefore keeps a
// stack with one level for each element from the root to the element of the last path. A level holds the
// length of its part of the path and the number of child elements seen so far, by name. The next path begins
// with the levels that it shares with the last one, and counting goes on where it ended.
#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "markers/marker_format.h"
#include "markers/publish_params.h"
#include "markers/xml/dom.h"

namespace ventrix {

/// The state of the stamps in one encoding pass; apart from `sourceNames` it starts empty. It stays correct
/// while the ancestors of stamped text nodes, and their siblings of the same name, stay in the tree. The
/// encoding walk keeps them: it removes only listed elements, and stamps no text node below those.
struct StampState {
    /// Numbers by name. A search among the first few names is faster than a hash table.
    struct Counts {
        std::vector<std::pair<std::string_view, std::size_t>> few;
        std::unordered_map<std::string_view, std::size_t> many;
    };
    struct Level {
        xml::Node element;
        std::size_t pathLength = 0;  ///< Length of the path that ends with this element.
        xml::Node lastCounted;       ///< The last child that `counts` includes; null at first.
        Counts counts;               ///< Child elements by name, up to `lastCounted`.
    };
    /// Names of PublishParams::addSourcePath that are not used up. A pass starts with the whole list.
    std::list<std::string> sourceNames;
    /// Root first. Those past `levelCount` are kept only so that their allocations can be reused.
    std::vector<Level> levels;
    std::size_t levelCount = 0;
    std::string path;                       ///< The path of the last level.
    std::vector<xml::Node> chain;           ///< Scratch memory.
    std::optional<std::string> sourcePath;  ///< The value of the source path entries, once one was needed.
};

/// True if AddPathEntries may append an entry.
bool HasPathEntries(xml::Node parent, const PublishParams& params, const StampState& state);

/// Appends the path entries of a text node directly in `parent` to an attribute group that is being composed:
/// the XPath entry, if the request wants one, then the source path entry, if the name of `parent` is "title"
/// or in `state.sourceNames`, from which that occurrence is then removed.
void AddPathEntries(xml::Node parent, std::string& group, const PublishParams& params, StampState& state);

/// The path of the element from the root. A step is "/", the qualified name and, from the second sibling of
/// that name on, "[n]". Empty for a node that is not an element. The string is part of the state.
const std::string& BuildXPath(xml::Node element, StampState& state);

void AddXPathEntry(xml::Node element, std::string& group, const std::string& xpathAttr, StampState& state);

void AddSourcePathEntry(std::string& group, const PublishParams& params, StampState& state);

/// Stamps the first filled text node of each element that a query selects with the query itself. A query that
/// the document rejects is skipped.
void StampPreservedXPaths(xml::Document& document, const std::list<std::string>& queries,
                          const std::string& attribute);

}  // namespace ventrix
