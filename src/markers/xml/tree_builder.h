// Builds the tree of a text: one record for each element, text, comment, CDATA section, processing
// instruction and entity reference below the root. On the way it sees whether the root's content is
// well-formed, as far as that can be told at a glance; a full parser is then spared.
#pragma once

#include "markers/xml/document_store.h"

namespace ventrix::xml {

enum class Form {
    kBroken,     ///< There is no tree.
    kDoubtful,   ///< The tree holds if the text is well-formed, which a parser must tell.
    kWellFormed  ///< The root element is well-formed, whatever stands around it.
};

/// Fills the tree below the source's document node.
Form BuildTree(DocumentStore& store, SourceText& source);

}  // namespace ventrix::xml
