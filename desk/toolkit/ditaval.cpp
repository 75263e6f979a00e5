#include "desk/toolkit/ditaval.h"

#include <algorithm>
#include <initializer_list>
#include <set>

#include "desk/xml/lenient_load.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

/// The values of one conditional attribute, or of one group in it, separated by whitespace.
struct Condition {
    std::string attribute;
    std::string group;  ///< The group's name; empty for the values in no group.
    std::string values;
};

bool ExcludesValue(const Ditaval& rules, const Condition& condition, const std::string& value) {
    const std::string& attribute = condition.attribute;
    const std::string& nearest = condition.group.empty() ? attribute : condition.group;
    const std::pair<std::string, std::string> keys[] = {
        {nearest, value}, {nearest, ""}, {attribute, value}, {attribute, ""}, {"", ""}};
    for (const auto& key : keys) {
        if (key.first.empty() && attribute == "rev") {
            break;
        }
        if (const auto rule = rules.excludes.find(key); rule != rules.excludes.end()) {
            return rule->second;
        }
    }
    return false;
}

bool ExcludesAll(const Ditaval& rules, const Condition& condition) {
    constexpr std::string_view kWhitespace = " \t\r\n";
    bool anyValue = false;
    const std::string& values = condition.values;
    for (std::size_t at = values.find_first_not_of(kWhitespace); at != std::string::npos;) {
        const std::size_t end = std::min(values.find_first_of(kWhitespace, at), values.size());
        if (!ExcludesValue(rules, condition, values.substr(at, end - at))) {
            return false;
        }
        anyValue = true;
        at = values.find_first_not_of(kWhitespace, end);
    }
    return anyValue;
}

/// Removes the first group, `audience(expert novice)`, from the value.
std::optional<Condition> TakeGroup(const std::string& attribute, std::string& values) {
    const std::size_t open = values.find('(');
    const std::size_t close = values.find(')', std::min(open, values.size()));
    if (open == std::string::npos || close == std::string::npos) {
        return std::nullopt;
    }
    const std::size_t before = open == 0 ? std::string::npos : values.find_last_of(" \t\r\n", open - 1);
    const std::size_t begin = before == std::string::npos ? 0 : before + 1;
    Condition group{attribute, values.substr(begin, open - begin), values.substr(open + 1, close - open - 1)};
    values.replace(begin, close + 1 - begin, " ");
    return group;
}

/// Whether the root's domains name the attribute as a specialisation: "a(props product delivery)".
bool IsSpecialisedProps(const xmlNode* root, const std::string& attribute) {
    std::string domains = Attribute(root, "domains");
    while (const auto domain = TakeGroup("domains", domains)) {
        const std::string& names = domain->values;
        if (domain->group == "a" && names.starts_with("props ") && names.ends_with(' ' + attribute)) {
            return true;
        }
    }
    return false;
}

bool IsConditional(const Ditaval& rules, const std::string& attribute, const xmlNode* root) {
    constexpr std::string_view kKnown[] = {"audience",       "product", "platform", "otherprops",
                                           "deliveryTarget", "props",   "rev"};
    if (std::find(std::begin(kKnown), std::end(kKnown), attribute) != std::end(kKnown)) {
        return true;
    }
    const auto rule = rules.excludes.lower_bound({attribute, ""});
    return (rule != rules.excludes.end() && rule->first.first == attribute) ||
           IsSpecialisedProps(root, attribute);
}

bool ExcludesBy(const Ditaval& rules, const std::string& attribute, std::string values) {
    while (const auto group = TakeGroup(attribute, values)) {
        if (ExcludesAll(rules, *group)) {
            return true;
        }
    }
    return ExcludesAll(rules, {attribute, "", std::move(values)});
}

bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
    return std::ranges::find(words, word) != words.end();
}

std::string LineOf(const xmlNode* element) {
    return "line " + std::to_string(xmlGetLineNo(element)) + ": ";
}

/// Why a toolkit would pass over the rule, one line; empty if it would not.
std::string ProblemOf(const xmlNode* element) {
    const std::string name(View(element->name));
    if (IsOneOf(name, {"style-conflict"})) {
        return {};
    }
    if (!IsOneOf(name, {"prop", "revprop"})) {
        return LineOf(element) + "<" + name + "> is not a rule (expected prop, revprop or style-conflict)";
    }
    const std::string action = Attribute(element, "action");
    if (IsOneOf(action, {"include", "exclude", "passthrough", "flag", "noflag"})) {
        return {};
    }
    return LineOf(element) +
           (action.empty() ? "a rule without an action" : "unknown action \"" + action + "\"") +
           " (expected include, exclude, passthrough or flag)";
}

void AddRule(Ditaval& rules, const xmlNode* element) {
    if (View(element->name) == "style-conflict") {
        return;
    }
    const std::string action = Attribute(element, "action");
    const std::string attribute = View(element->name) == "revprop" ? "rev" : Attribute(element, "att");
    rules.excludes.insert({{attribute, Attribute(element, "val")}, action == "exclude"});
    if (action == "flag" && rules.firstFlag == 0) {
        rules.firstFlag = static_cast<int>(xmlGetLineNo(element));
    }
}

}  // namespace

std::optional<Ditaval> ReadDitaval(const NativePath& path, std::string& reason) {
    const LenientDocument loaded = LoadLeniently(path);
    if (!loaded.wellFormed) {
        reason = path.utf8 + ": " + loaded.reason;
        return std::nullopt;
    }
    const xmlNode* root = xmlDocGetRootElement(loaded.document.get());
    if (View(root->name) != "val") {
        reason = path.utf8 + ": it is not a DITAVAL file, because its root element is <" +
                 std::string(View(root->name)) + ">, not <val>";
        return std::nullopt;
    }
    Ditaval rules;
    for (const xmlNode* rule = FirstElement(root); rule != nullptr; rule = NextElement(rule)) {
        if (const std::string problem = ProblemOf(rule); !problem.empty()) {
            reason = path.utf8 + ": " + problem;
            return std::nullopt;
        }
        AddRule(rules, rule);
    }
    return rules;
}

namespace {

/// What the rules say about the values above the value, level by level; nothing if they say nothing.
std::optional<bool> RuleAbove(const Ditaval& rules, const std::string& attribute, const std::string& value,
                              const std::map<std::string, std::set<std::string>>& parents) {
    std::set<std::string> seen{value};
    std::set<std::string> level{value};
    while (!level.empty()) {
        std::optional<bool> found;
        std::set<std::string> above;
        for (const std::string& below : level) {
            const auto known = parents.find(below);
            for (const std::string& parent :
                 known == parents.end() ? std::set<std::string>() : known->second) {
                const auto rule = rules.excludes.find({attribute, parent});
                if (rule != rules.excludes.end()) {
                    found = found.value_or(false) || rule->second;
                }
                if (seen.insert(parent).second) {
                    above.insert(parent);
                }
            }
        }
        if (found.has_value()) {
            return found;
        }
        level = std::move(above);
    }
    return std::nullopt;
}

}  // namespace

void ApplyScheme(const SubjectScheme& scheme, Ditaval& rules) {
    const Ditaval given = rules;
    for (const auto& [attribute, parents] : scheme) {
        for (const auto& [value, above] : parents) {
            const auto excludes = RuleAbove(given, attribute, value, parents);
            if (excludes.has_value()) {
                rules.excludes.insert({{attribute, value}, *excludes});
            }
        }
    }
}

bool IsExcluded(const Ditaval& rules, const xmlNode* element) {
    const xmlNode* const root = xmlDocGetRootElement(element->doc);
    for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
        const std::string name(View(attribute->name));
        if (attribute->ns == nullptr && IsConditional(rules, name, root) &&
            ExcludesBy(rules, name, Attribute(element, name.c_str()))) {
            return true;
        }
    }
    return false;
}

bool Filter(const Ditaval& rules, xmlDoc* document, const std::function<void(xmlNode*)>& exclude) {
    xmlNode* root = xmlDocGetRootElement(document);
    if (rules.excludes.empty()) {
        return true;
    }
    if (IsExcluded(rules, root)) {
        return false;
    }
    for (xmlNode* node = NextNode(root, root); node != nullptr;) {
        if (node->type != XML_ELEMENT_NODE || !IsExcluded(rules, node)) {
            node = NextNode(node, root);
            continue;
        }
        // The next node to visit is the one after the excluded subtree, which is gone in the next iteration.
        xmlNode* excluded = node;
        while (node != nullptr && node != root && node->next == nullptr) {
            node = node->parent;
        }
        node = node == nullptr || node == root ? nullptr : node->next;
        exclude(excluded);
        xmlUnlinkNode(excluded);
        xmlFreeNode(excluded);
    }
    return true;
}

}  // namespace ventrix::desk
