// What a pass does to one node before the transformation: attributes, scoped attributes and inline elements
// become marker text. Attributes stay on their elements; only inline elements are replaced.
#pragma once

#include <list>
#include <optional>
#include <string>
#include <string_view>

#include "markers/inherited_attributes.h"
#include "markers/path_stamps.h"
#include "markers/publish_params.h"
#include "markers/xml/dom.h"

namespace ventrix {

/// The state of one encoding walk.
struct EncodingState {
    InheritedAttributes inherited;
    StampState stamps;
    xml::Node groupOwner;        ///< The element for whose text nodes `group` was composed, or null.
    std::string_view group;      ///< An attribute group, or empty. A view of `inherited` or `groupWithPaths`.
    std::string groupWithPaths;  ///< An inherited group with path entries.
    /// Whether the run of whitespace and listed elements that the walk is in is followed by a filled text
    /// node; no value before the first question of a run. It has the same answer for each element of the run.
    std::optional<bool> textFollows;
};

/// Puts an attribute group in front of a filled text node directly in `parent`, if there is anything to carry
/// for it.
void EncodeTextNode(xml::Node textNode, xml::Node parent, const PublishParams& params, EncodingState& state);

/// Puts the element's scoped attributes in front of its first filled text node. Without one they are lost.
/// `scopedAttributes` must hold whole groups of four names.
void EncodeScopedAttributes(xml::Node element, const std::list<std::string>& scopedAttributes);

/// Replaces a listed element by an element group if it is part of running text. Returns the sibling at which
/// the walk continues; a null node ends the walk of this level.
xml::Node EncodeInlineElement(xml::Document& document, xml::Node element, const PublishParams& params,
                              EncodingState& state);

/// True if the next siblings of the node are whitespace and listed elements, if any, and then a filled text
/// node.
bool FollowedByFilledText(xml::Node node, const std::list<std::string>& elements);

}  // namespace ventrix
