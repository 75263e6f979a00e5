// What a pass does to one node of the generated HTML: marker text becomes attributes of the elements around
// the text and elements in the text. Nothing here fails; marker text that cannot be read stays in the text,
// and ClearMarkerWords removes its words.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "markers/marker_format.h"
#include "markers/publish_params.h"
#include "markers/xml/dom.h"

namespace ventrix {

/// The tokens of an element's tags attribute.
struct TagTokens {
    xml::Node element;
    bool isRead = false;  ///< The other fields are up to date.
    std::unordered_map<std::string, std::size_t> firstPositions;
    std::size_t count = 0;
    std::string tail;  ///< What follows the last token in the value.
};

/// What the walk keeps from one text node to the next: the tokens of the open elements with tag pairs,
/// innermost last, so that each text node of an element costs only what it adds.
struct DecodingState {
    std::vector<TagTokens> open;
};

/// Decodes one filled text node. Returns the sibling at which the walk continues; null after the last one.
xml::Node DecodeTextNode(xml::Document& document, xml::Node textNode, const PublishParams& params,
                         DecodingState& state);

/// The walk leaves an element.
void LeaveElement(xml::Node element, DecodingState& state);

/// Appends the pairs to the element's tags attribute, except those whose name its value already had.
void ApplyTagPairs(xml::Document& document, xml::Node element, const AttributePairs& tagPairs,
                   const PublishParams& params, DecodingState& state);

/// Applies each entry to the nearest element of its name around the text node: sets the attribute, unless it
/// has a value already. Entries without such an element are dropped.
void ApplyScopedEntries(xml::Document& document, xml::Node textNode, ScopedEntries entries);

/// Inserts the pieces of a text node in front of it: element groups as elements, others as text nodes. An
/// element group whose XML does not parse is dropped.
void InsertPieces(xml::Document& document, const std::vector<std::string>& pieces, xml::Node textNode);

/// Removes the marker words from all text nodes below the element.
void ClearMarkerWords(xml::Node element);

}  // namespace ventrix
