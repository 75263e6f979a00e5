// Writes trees as XML: unchanged content as the bytes of its source, the rest from the tree.
#pragma once

#include <string>

#include "markers/xml/document_store.h"
#include "platform/files.h"

namespace ventrix::xml {

/// Writes the whole document of a source, in UTF-8, and passes it on in pieces. False as soon as `put`
/// returns false.
bool WriteDocument(DocumentStore& store, const SourceText& source, const platform::PutPiece& put);

/// True for an element whose source bytes can be parsed on their own and are up to date.
bool StandsAlone(DocumentStore& store, NodeIndex element);

/// Writes one element with its subtree so that it can be parsed on its own: declared entities are expanded,
/// and the namespaces that it uses declared.
std::string WriteElement(DocumentStore& store, NodeIndex element);

}  // namespace ventrix::xml
