// The elements of a published page that carry data. Strings are UTF-8.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "desk/paths/paths.h"
#include "desk/xml/lenient_load.h"

namespace ventrix::desk {

/// The attributes of a page that carry data. Each is that of the request, or its default.
struct CarryingAttributes {
    std::string tags = "data-twtags";  ///< Names and values, each with QL_SEP after it.
    bool tagsHaveXPath = false;        ///< The XPath is among the tags, after any preserved queries.
    std::string xpath = {};            ///< Has the XPaths; empty if none has.
    std::string sourcePath = {};       ///< Has the source paths; empty if they are among the tags.
};

struct TaggedElement {
    std::string id;          ///< Its own, if no earlier element of the page has it; else its position.
    std::string name;        ///< As in the page.
    std::string xpath;       ///< In the source; empty if it is not carried.
    std::string sourcePath;  ///< Of the source, with slashes, relative to the document; the same.
    std::vector<std::string> queries;                             ///< Preserved ones among the tags.
    std::vector<std::pair<std::string, std::string>> attributes;  ///< Further names with their values.
    const xmlNode* node = nullptr;                                ///< In the page.
};

struct TaggedPage {
    LenientDocument loaded;               ///< Has the elements' nodes.
    std::vector<TaggedElement> elements;  ///< In document order.
    std::string problem;                  ///< Why they cannot be read, one line; else empty.
};

/// A position is the way from the root: the numbers of the child elements from 1, as in "/2/1/3".
TaggedPage ReadTaggedElements(const NativePath& page, const CarryingAttributes& names);

}  // namespace ventrix::desk
