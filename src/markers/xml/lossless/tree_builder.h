// Builds the tree of a well-formed text: one record for each element, text, comment, CDATA section,
// processing instruction and entity reference below the root.
#pragma once

#include "markers/xml/lossless/document_store.h"

namespace ventrix::xml {

/// Where the root's start tag begins, behind the prolog; npos if there is none.
std::size_t RootBegin(std::string_view text);

/// Fills the tree below the source's document node. The text must have been judged well-formed. False if it
/// does not have the form after all, which leaves no root.
bool BuildTree(DocumentStore& store, SourceText& source);

}  // namespace ventrix::xml
