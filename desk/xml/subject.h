// What a finding is about, as the source file shows it at the place of the finding. Strings are UTF-8.
#pragma once

#include <string>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Each member may be empty.
struct Subject {
    std::string element = {};    ///< The name of an element, if no attribute is meant.
    std::string attribute = {};  ///< The name of an attribute.
    std::string value = {};      ///< Its value, after parsing.
    NativePath target = {};      ///< The file that it refers to.
};

}  // namespace ventrix::desk
