// Reads attributes out of a start tag, and those that the DTD supplies.
#pragma once

#include <string>

#include "markers/xml/document_store.h"

namespace ventrix::xml {

/// Makes nodes of an element's attributes, in the order of the tag; those of the DTD behind.
void ReadSourceAttributes(DocumentStore& store, NodeIndex element);

/// An attribute's value as its start tag has it, read as its declared type asks.
std::string_view SourceValue(DocumentStore& store, NodeIndex attribute, std::string& buffer);

}  // namespace ventrix::xml
