// Writes trees as XML: what nobody changed as the bytes that it came from, the rest anew.
#pragma once

#include <string>

#include "markers/xml/document_store.h"
#include "platform/files.h"

namespace ventrix::xml {

/// Writes the whole document of a source, in UTF-8, and hands it over in pieces. False once `put` gave that.
bool WriteDocument(DocumentStore& store, const SourceText& source, const platform::PutPiece& put);

/// True for an element that parses on its own just as its source has it.
bool StandsAlone(DocumentStore& store, NodeIndex element);

/// One element with its subtree, such that it parses on its own: declared entities expanded, and the
/// namespaces that it uses declared.
std::string WriteElement(DocumentStore& store, NodeIndex element);

}  // namespace ventrix::xml
