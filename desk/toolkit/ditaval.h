// Conditional processing with a DITAVAL file: which elements of a map or topic are left out. Strings are
// UTF-8.
#pragma once

#include <libxml/tree.h>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Rules by attribute and value: true means exclude; flag and passthrough count as include. An empty value is
/// the default for an attribute, an empty attribute the default for all.
struct Ditaval {
    std::map<std::pair<std::string, std::string>, bool> excludes;
    int firstFlag = 0;  ///< The line of the first rule that flags; 0 if none does.
};

/// Reads a DITAVAL file. Nothing, and the reason in one line, if it is missing, is not well-formed, is
/// another kind of file, or has a rule with an action that is none.
std::optional<Ditaval> ReadDitaval(const NativePath& path, std::string& reason);

/// By attribute: the values right above each value, in the hierarchy that a subject scheme binds to the
/// attribute. A subject with several names is above its children with each of them.
using SubjectScheme = std::map<std::string, std::map<std::string, std::set<std::string>>>;

/// A value without a rule of its own gets that of the nearest value above it which has one; of several that
/// are as near, one that excludes.
void ApplyScheme(const SubjectScheme& scheme, Ditaval& rules);

/// True if one of the element's conditional attributes has values and all of them are excluded. Conditional
/// are audience, product, platform, otherprops, deliveryTarget, props, rev, every other attribute that the
/// rules name, and those that the document's domains specialise from props. The default for all attributes
/// does not apply to rev. A value may contain groups, `audience(expert novice)`, each of which counts as an
/// attribute of its own; a value in it without a rule for the group's name counts for the attribute that
/// contains the group.
bool IsExcluded(const Ditaval& rules, const xmlNode* element);

/// Removes the excluded elements, each after it was passed to `exclude`. False, with the document unchanged,
/// if its root element is excluded.
bool Filter(const Ditaval& rules, xmlDoc* document, const std::function<void(xmlNode*)>& exclude);

}  // namespace ventrix::desk
