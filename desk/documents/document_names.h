// The names that occur in the files of a document. Strings are UTF-8; a name has its prefix, if there is one.
#pragma once

#include <libxml/tree.h>

#include <functional>
#include <set>
#include <string>

namespace ventrix::desk {

struct DocumentNames {
    std::set<std::string, std::less<>> elements, attributes;
};

/// Adds the names of a tree. The content of entities is skipped.
void CollectNames(xmlDoc* document, DocumentNames& names);

}  // namespace ventrix::desk
