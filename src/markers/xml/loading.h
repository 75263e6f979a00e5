// Loads a file's bytes or a string into a store, as the tree below a document node.
#pragma once

#include <string>
#include <string_view>

#include "markers/xml/document_store.h"

namespace ventrix::xml {

struct LoadSettings {
    std::string_view path;  ///< System notation; relative system ids refer to its folder. May be empty.
    bool isFile = true;     ///< False for a string, which is UTF-8 whatever it declares.
    bool resolveExternals = false;
};

/// Returns an empty string on success, otherwise the reason in one line; the document node then has no
/// children.
std::string LoadSource(DocumentStore& store, NodeIndex document, platform::Bytes bytes,
                       const LoadSettings& settings);

/// The element that a piece of XML consists of, without a parent. 0 if the piece is not certainly
/// well-formed, or has declarations.
NodeIndex LoadElement(DocumentStore& store, std::string_view xml);

}  // namespace ventrix::xml
