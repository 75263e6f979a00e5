// Namespace declarations, and those that an element taken out of its document has to bring along.
#pragma once

#include <string>
#include <string_view>

#include "markers/xml/document_store.h"

namespace ventrix::xml {

/// The prefix that an attribute of this name declares: "" for "xmlns", "a" for "xmlns:a"; a view without data
/// for any other name.
std::string_view DeclaredPrefix(std::string_view attributeName);

/// The part before the colon; empty without a colon.
std::string_view PrefixOf(std::string_view qualifiedName);

/// Declarations, each with a space before it, of the prefixes that the element's subtree uses and the element
/// does not declare.
std::string MissingNamespaces(DocumentStore& store, NodeIndex element);

}  // namespace ventrix::xml
