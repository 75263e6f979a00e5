// The attributes that a text inherits from the elements around it. A memo holds what is in force at each
// element that the walk is in, so that a text at any depth costs no climb to the root.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "markers/xml/dom.h"

namespace ventrix {

/// The walk keeps it in step: no element stays in it when the walk has left it. Starts empty.
struct InheritedMemo {
    struct Entry {
        std::string_view name;
        std::size_t end;  ///< Where it ends in `group`.
    };
    /// An element that adds to what it inherits.
    struct Source {
        std::size_t depth = 0;       ///< How many levels there are with its own.
        std::string group;           ///< The attribute group that is in force inside it.
        std::vector<Entry> entries;  ///< Of that group.
    };
    std::vector<xml::Node> levels;  ///< From the root inwards.
    /// From the root inwards; of those behind the last one only the memory is of use. They stay where they
    /// are.
    std::vector<std::unique_ptr<Source>> sources;
    std::size_t sourceCount = 0;  ///< The last of these is in force.
    std::vector<xml::Node> entered;
    std::string buffer;
};

/// The wanted attributes of the element around a text and of those around that, nearest element first, within
/// one element in document order, as an attribute group; empty if there are none. Each name gives one entry,
/// with an empty target. The group lies in the memo and holds until the walk leaves the element.
std::string_view CollectInheritedAttributes(xml::Node parent, const std::list<std::string>& wanted,
                                            InheritedMemo& memo);

/// Takes note that the walk is done with the element.
void LeaveElement(xml::Node element, InheritedMemo& memo);

}  // namespace ventrix
