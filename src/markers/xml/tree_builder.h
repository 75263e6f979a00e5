// Builds the tree of a source: one node for each element, text, comment, CDATA section, processing
// instruction and entity reference in the root element. Attributes become nodes later, when somebody asks for
// them.
#pragma once

#include "markers/xml/document_store.h"

namespace ventrix::xml {

enum class BuildResult {
    kNoTree,      ///< There is no tree.
    kUnverified,  ///< The tree is right if the text is well-formed, which a parser has to find out.
    kWellFormed   ///< The root element is well-formed, whatever precedes and follows it.
};

/// Fills the tree below the source's document node.
BuildResult BuildTree(DocumentStore& store, SourceText& source);

}  // namespace ventrix::xml
