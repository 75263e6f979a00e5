// Stamps that say where a published text came from: an XPath, the source file, a query to preserve. They are
// ordinary entries of an attribute group, so that the decoding walk needs to know nothing of them.
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

/// What one pass remembers between texts, so that neither the path to an element nor the siblings in front of
/// it are gone through anew for every text. A pass begins with an empty one. It holds while the elements on
/// the way to a marked text and their siblings of the same name stay in the tree, as they do in the encoding
/// walk: it takes out listed elements only, and marks no text below those.
struct StampMemo {
    /// Numbers by name. The first few names need no table.
    struct Counts {
        std::vector<std::pair<std::string_view, std::size_t>> few;
        std::unordered_map<std::string_view, std::size_t> many;
    };
    struct Level {
        xml::Node element;
        std::size_t pathLength = 0;  ///< Of the path that ends with this element.
        xml::Node lastCounted;       ///< The child up to which `counts` goes.
        Counts counts;               ///< Child elements so far.
    };
    std::vector<Level> levels;     ///< From the root inwards; of those behind the last one only the memory.
    std::size_t levelCount = 0;    ///< The last of these is the element of the last path.
    std::string path;              ///< The path of the last level.
    std::vector<xml::Node> chain;  ///< From the root to an element; here for its memory only.
    std::optional<std::string> sourcePath;
};

/// True if AddPathEntries may have something to append.
bool HasPathEntries(xml::Node parent, const PublishParams& record);

/// Appends the XPath entry, if the request wants one, and the source path entry, if the parent's name still
/// stands in `record.addSourcePath`, where it is crossed off, or is "title".
void AddPathEntries(xml::Node parent, std::string& composed, PublishParams& record, StampMemo& memo);

/// The element's path from the root: a step is "/", the qualified name, and "[n]" for the n-th sibling of
/// that name from the second on. Empty for a node that is no element. The text lies in the memo.
const std::string& BuildXPath(xml::Node element, StampMemo& memo);

void AddXPathEntry(xml::Node element, std::string& composed, const std::string& xpathAttr, StampMemo& memo);

void AddSourcePathEntry(std::string& composed, const PublishParams& record, StampMemo& memo);

/// Stamps the first filled text of each element that a query selects with the query's own text. A query that
/// the XML layer refuses is passed over.
void StampPreservedXPaths(xml::Document& document, const std::list<std::string>& queries,
                          const std::string& attribute);

}  // namespace ventrix
