// Writes trees as XML: what nobody changed as the bytes that it came from, the rest anew.
#pragma once

#include <string>

#include "markers/xml/lossless/document_store.h"

namespace ventrix::xml {

/// The whole document of a source, in UTF-8.
std::string WriteDocument(DocumentStore& store, const SourceText& source);

/// One element with its subtree, such that it parses on its own: declared entities expanded, attributes of
/// the DTD written out, and the namespaces that it uses declared.
std::string WriteElement(DocumentStore& store, NodeIndex element);

}  // namespace ventrix::xml
