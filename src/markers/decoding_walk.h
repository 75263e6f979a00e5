// What a pass does to one node of the generated HTML: marker text becomes attributes of the elements around
// the text and elements in the text. Nothing here fails; marker text that cannot be read stays in the text
// without its words.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "markers/marker_format.h"
#include "markers/publish_params.h"
#include "markers/xml/dom.h"

namespace ventrix {

/// The tokens of an element's tags attribute.
struct TagTokens {
    xml::Node element;
    std::unordered_map<std::string, std::size_t> firstPositions;
    std::size_t count = 0;
    std::string tail;  ///< What follows the last token in the value.
};

/// What the walk keeps from one text node to the next.
struct DecodingState {
    /// The tokens of the open elements with a long tags attribute, innermost last, so that each text node of
    /// an element costs only what it adds.
    std::vector<TagTokens> open;
    EncodedText encoded;     ///< Scratch memory: of the text node; only the pairs, if it has another form.
    std::string elementXml;  ///< Scratch memory: of an element group.
    std::string content;     ///< Scratch memory: of the text node.
    std::string stripped;    ///< Scratch memory: the content without attribute groups.
    std::string added;       ///< Scratch memory: to the tags attribute.
};

/// Decodes one filled text node. No marker word is left in it and in the elements that it contained. Returns
/// the sibling at which the walk continues; null after the last one.
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

/// Puts the pieces in the place of the text node: element groups as elements, others as text nodes, of which
/// the text node itself becomes the last. An element group whose XML does not parse is dropped. There is at
/// least one piece; marker words that are left in the pieces are removed.
void InsertPieces(xml::Document& document, const std::vector<std::string_view>& pieces, xml::Node textNode);

/// Removes the marker words from all text nodes below the element. The walk does this for elements that it
/// does not enter.
void ClearMarkerWords(xml::Node element);

}  // namespace ventrix
