// What a pass does to one node on the way to the transformation: attributes, scoped attributes and inline
// elements become marker text. Attributes stay on their elements; only inline elements are replaced.
#pragma once

#include <list>
#include <optional>
#include <string>

#include "markers/inherited_attributes.h"
#include "markers/path_stamps.h"
#include "markers/publish_params.h"
#include "markers/xml/dom.h"

namespace ventrix {

/// What one encoding walk remembers from node to node.
struct EncodingMemo {
    InheritedMemo inherited;
    StampMemo stamps;
    xml::Node groupOwner;    ///< The element whose texts all get `group`, or no node.
    std::string_view group;  ///< An attribute group, or empty. Lies in `inherited` or in `groupWithPaths`.
    std::string groupWithPaths;
    std::optional<bool> textFollows;  ///< FollowedByFilledText, for the run of siblings that the walk is in.
};

/// Puts an attribute group in front of a filled text, if there is anything to carry for it.
void EncodeTextNode(xml::Node textNode, PublishParams& record, EncodingMemo& memo);

/// Puts the element's scoped attributes in front of its first filled text. An element without one carries
/// none. `scopedAttributes` holds whole groups of four names.
void EncodeScopedAttributes(xml::Node element, const std::list<std::string>& scopedAttributes);

/// Replaces a listed element by an element group, if it stands in running text. The sibling at which the walk
/// goes on; no node ends the walk of this level.
xml::Node EncodeInlineElement(xml::Document& document, xml::Node element, const PublishParams& record,
                              EncodingMemo& memo);

/// True if a filled text follows the node among its siblings, with nothing but blanks and listed elements in
/// between.
bool FollowedByFilledText(xml::Node node, const std::list<std::string>& elements);

}  // namespace ventrix
