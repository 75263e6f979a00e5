// Conditional processing as a DITAVAL file orders it: which elements of a map or topic a publication leaves
// out.
#pragma once

#include <libxml/tree.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Rules by attribute and value. An empty value is the attribute's default, an empty attribute the default of
/// all. True means exclude; flags and pass-through count as include.
struct Ditaval {
    std::map<std::pair<std::string, std::string>, bool> excludes;
};

/// Reads a DITAVAL file. Nothing if it is missing or not well-formed; `reason` then tells why.
std::optional<Ditaval> ReadDitaval(const NativePath& path, std::string& reason);

/// True if one of the element's conditional attributes has values and all of them are excluded. The
/// attributes are audience, product, platform, otherprops, props, rev and whatever else the rules name;
/// `props` and `otherprops` may hold groups, `audience(expert novice)`, which count as attributes of their
/// own.
bool IsExcluded(const Ditaval& rules, const xmlNode* element);

/// Takes the excluded elements out. False, with the document unchanged, if its root element is excluded.
bool Filter(const Ditaval& rules, xmlDoc* document);

}  // namespace ventrix::desk
