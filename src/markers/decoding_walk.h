// What a pass does to one node of the generated HTML: marker text becomes attributes of the elements around
// it and elements in the text. Nothing here fails; what cannot be read is left for ClearMarkerWords.
#pragma once

#include <string>
#include <vector>

#include "markers/marker_format.h"
#include "markers/publish_params.h"
#include "markers/xml/dom.h"

namespace ventrix {

/// Decodes one filled text node and gives the sibling at which the walk goes on, or no node.
xml::Node DecodeTextNode(xml::Document& document, xml::Node textNode, const PublishParams& record);

/// Adds the pairs to the element's tags attribute, except for names that its value held before.
void ApplyTagPairs(xml::Document& document, xml::Node element, const AttributePairs& tagPairs,
                   const PublishParams& record);

/// Uses each entry up at the nearest element of its name around the text: sets the attribute, unless it has a
/// value there. Entries without such an element are dropped.
void ApplyScopedEntries(xml::Document& document, xml::Node textNode, ScopedEntries entries);

/// Inserts the pieces of a text in front of it: element groups as elements, everything else as text nodes.
/// A group whose XML does not parse is dropped.
void InsertPieces(xml::Document& document, const std::vector<std::string>& pieces, xml::Node textNode);

/// Takes the marker words out of every text node below the element.
void ClearMarkerWords(xml::Node element);

}  // namespace ventrix
