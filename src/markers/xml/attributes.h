// Makes nodes of the attributes in a start tag and of those that the DTD supplies.
#pragma once

#include <libxml/tree.h>

#include <string>

#include "markers/xml/document_store.h"

namespace ventrix::xml {

/// Makes nodes of an element's attributes: those of its start tag in their order, then those of the DTD.
void ReadSourceAttributes(DocumentStore& store, NodeIndex element);

/// The type that the DTD declares for an attribute, CDATA without a declaration.
xmlAttributeType DeclaredType(DocumentStore& store, NodeIndex attribute);

/// The value of an attribute in a source, normalised as its declared type requires. `buffer` is filled where
/// that differs from the source bytes.
std::string_view SourceValue(DocumentStore& store, NodeIndex attribute, std::string& buffer);

}  // namespace ventrix::xml
