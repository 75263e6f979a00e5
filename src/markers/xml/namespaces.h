// Namespace declarations that a piece of a document needs from around it.
#pragma once

#include <string>
#include <string_view>

#include "markers/xml/document_store.h"

namespace ventrix::xml {

/// The prefix that an attribute name declares: "" for "xmlns", "a" for "xmlns:a"; null for any other name.
std::string_view DeclaredPrefix(std::string_view attributeName);

/// The part in front of the colon; empty without one.
std::string_view PrefixOf(std::string_view qualifiedName);

/// Declarations, each with a blank in front, of the prefixes that the element's subtree uses and does not
/// declare itself.
std::string MissingNamespaces(DocumentStore& store, NodeIndex element);

}  // namespace ventrix::xml
