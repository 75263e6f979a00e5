#include "desk/toolkit/ditaval.h"

#include <algorithm>

#include "desk/xml/lenient_load.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

/// One conditional attribute, or one group in it, and its values separated by whitespace.
struct Condition {
    std::string attribute;
    std::string values;
};

bool ExcludesValue(const Ditaval& rules, const std::string& attribute, const std::string& value) {
    const std::pair<std::string, std::string> keys[] = {{attribute, value}, {attribute, ""}, {"", ""}};
    for (const auto& key : keys) {
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
        if (!ExcludesValue(rules, condition.attribute, values.substr(at, end - at))) {
            return false;
        }
        anyValue = true;
        at = values.find_first_not_of(kWhitespace, end);
    }
    return anyValue;
}

/// Removes the first group, `audience(expert novice)`, from the value.
std::optional<Condition> TakeGroup(std::string& values) {
    const std::size_t open = values.find('(');
    const std::size_t close = values.find(')', std::min(open, values.size()));
    if (open == std::string::npos || close == std::string::npos) {
        return std::nullopt;
    }
    const std::size_t before = open == 0 ? std::string::npos : values.find_last_of(" \t\r\n", open - 1);
    const std::size_t begin = before == std::string::npos ? 0 : before + 1;
    Condition group{values.substr(begin, open - begin), values.substr(open + 1, close - open - 1)};
    values.replace(begin, close + 1 - begin, " ");
    return group;
}

bool IsConditional(const Ditaval& rules, const std::string& attribute) {
    constexpr std::string_view kKnown[] = {"audience", "product", "platform", "otherprops", "props", "rev"};
    if (std::find(std::begin(kKnown), std::end(kKnown), attribute) != std::end(kKnown)) {
        return true;
    }
    const auto rule = rules.excludes.lower_bound({attribute, ""});
    return rule != rules.excludes.end() && rule->first.first == attribute;
}

bool ExcludesBy(const Ditaval& rules, const std::string& attribute, std::string values) {
    if (attribute == "props" || attribute == "otherprops") {
        while (const auto group = TakeGroup(values)) {
            if (ExcludesAll(rules, *group)) {
                return true;
            }
        }
    }
    return ExcludesAll(rules, {attribute, std::move(values)});
}

void AddRule(Ditaval& rules, const xmlNode* element) {
    const bool revision = View(element->name) == "revprop";
    const std::string action = Attribute(element, "action");
    if ((View(element->name) != "prop" && !revision) || action.empty()) {
        return;
    }
    const std::string attribute = revision ? "rev" : Attribute(element, "att");
    rules.excludes[{attribute, Attribute(element, "val")}] = action == "exclude";
}

}  // namespace

std::optional<Ditaval> ReadDitaval(const NativePath& path, std::string& reason) {
    const LenientDocument loaded = LoadLeniently(path);
    if (!loaded.wellFormed) {
        reason = path.utf8 + ": " + loaded.reason;
        return std::nullopt;
    }
    Ditaval rules;
    const xmlNode* root = xmlDocGetRootElement(loaded.document.get());
    for (const xmlNode* rule = FirstElement(root); rule != nullptr; rule = NextElement(rule)) {
        AddRule(rules, rule);
    }
    return rules;
}

bool IsExcluded(const Ditaval& rules, const xmlNode* element) {
    for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
        const std::string name(View(attribute->name));
        if (attribute->ns == nullptr && IsConditional(rules, name) &&
            ExcludesBy(rules, name, Attribute(element, name.c_str()))) {
            return true;
        }
    }
    return false;
}

bool Filter(const Ditaval& rules, xmlDoc* document) {
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
        xmlUnlinkNode(excluded);
        xmlFreeNode(excluded);
    }
    return true;
}

}  // namespace ventrix::desk
