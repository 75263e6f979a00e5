// The element types of DITA 1.3: those of its standard maps, topics and domains.
#pragma once

#include <string_view>

namespace ventrix::desk {

struct ElementType {
    std::string_view name;
    std::string_view types;  ///< From its base type down to its own: "topic/ph ui-d/uicontrol".
    std::string_view defaults =
        {};  ///< Of its attributes, where the toolkit uses them: "linking=none toc=no".
};

/// Null if the vocabulary has no element of this name.
const ElementType* FindElementType(std::string_view name);

}  // namespace ventrix::desk
