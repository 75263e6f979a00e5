// The attributes that a text inherits from the elements around it. A memo holds what is in force at each
// element that the walk is in, so that a text at any depth costs no climb to the root.
#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "markers/marker_format.h"
#include "markers/xml/dom.h"

namespace ventrix {

/// The walk keeps it in step: no element stays in it when the walk has left it. Starts empty.
struct InheritedMemo {
    /// An element that adds to what it inherits.
    struct Source {
        std::size_t depth;         ///< How many levels there are with its own.
        AttributeEntries entries;  ///< In force inside it.
        std::string composed;      ///< The same as they stand inside an attribute group.
    };
    std::vector<xml::Node> levels;   ///< From the root inwards.
    std::vector<Source> sources;     ///< From the root inwards; the last one is in force.
    std::vector<xml::Node> entered;  ///< Only its memory is of use again.
};

/// The wanted attributes of the element around a text and of those around that, nearest element first, within
/// one element in document order. Each name gives one entry, with an empty target. They come composed, as
/// they stand inside an attribute group; the text lies in the memo and holds until that is used again.
std::string_view CollectInheritedAttributes(xml::Node parent, const std::list<std::string>& wanted,
                                            InheritedMemo& memo);

/// Takes note that the walk is done with the element.
void LeaveElement(xml::Node element, InheritedMemo& memo);

}  // namespace ventrix
