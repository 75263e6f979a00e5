// Conditional processing with a DITAVAL file: which elements of a map or topic are left out. Strings are
// UTF-8.
#pragma once

#include <libxml/tree.h>

#include <map>
#include <optional>
#include <string>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Rules by attribute and value: true means exclude; flag and passthrough count as include. An empty value is
/// the default for an attribute, an empty attribute the default for all.
struct Ditaval {
    std::map<std::pair<std::string, std::string>, bool> excludes;
};

/// Reads a DITAVAL file. Nothing, and the reason in one line, if it is missing or not well-formed.
std::optional<Ditaval> ReadDitaval(const NativePath& path, std::string& reason);

/// True if one of the element's conditional attributes has values and all of them are excluded. Conditional
/// are audience, product, platform, otherprops, props, rev and every other attribute that the rules name.
/// `props` and `otherprops` may contain groups, `audience(expert novice)`, each of which counts as an
/// attribute of its own.
bool IsExcluded(const Ditaval& rules, const xmlNode* element);

/// Removes the excluded elements. False, with the document unchanged, if its root element is excluded.
bool Filter(const Ditaval& rules, xmlDoc* document);

}  // namespace ventrix::desk
