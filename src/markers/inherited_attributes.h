// The attributes that a text node inherits from the elements around it, composed as an attribute group.
//
// Climbing to the root for every text node would take quadratic time in deep documents. Instead a stack holds
// the elements that the walk is in and, for each of them that has wanted attributes, the complete group of
// the text nodes directly in it: its own entries, then those of the enclosing group that it does not
// override. The group of a text node is then the last one on the stack.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "markers/xml/dom.h"

namespace ventrix {

/// The stack. It starts empty. Elements are entered when a text node needs them; the walk must call
/// LeaveElement for each element that it leaves.
struct InheritedAttributes {
    struct Entry {
        std::string_view name;
        std::size_t end;  ///< Position in `group` after the entry.
    };
    /// An element with wanted attributes.
    struct Source {
        std::size_t depth = 0;       ///< Number of entered elements, this one included.
        std::string group;           ///< The attribute group of the text nodes directly in it.
        std::vector<Entry> entries;  ///< The entries of `group`, in order.
    };
    std::vector<xml::Node> elements;  ///< The entered elements, root first.
    /// The entered elements with wanted attributes, root first. Those past `sourceCount` are kept only so
    /// that their allocations can be reused. As pointers, so that views of a group stay valid while the stack
    /// grows.
    std::vector<std::unique_ptr<Source>> sources;
    std::size_t sourceCount = 0;
    std::string buffer;  ///< Scratch memory.
};

/// The attribute group of the text nodes directly in `parent`, or empty: the wanted attributes of `parent`
/// and of the elements around it, nearest element first, within one element in document order. Each name
/// gives one entry, that of the nearest element, with an empty target. The view is valid until the walk
/// leaves `parent`.
std::string_view CollectInheritedAttributes(xml::Node parent, const std::list<std::string>& wanted,
                                            InheritedAttributes& inherited);

/// Takes the element off the stack, if it is there.
void LeaveElement(xml::Node element, InheritedAttributes& inherited);

}  // namespace ventrix
