#include "markers/inherited_attributes.h"

#include <algorithm>

#include "markers/dom_helpers.h"

namespace ventrix {
namespace {

AttributeEntries OwnEntries(xml::Node element, const std::list<std::string>& wanted) {
    AttributeEntries entries;
    std::string buffer;
    const xml::NamedNodeMap attributes = element.get_attributes();
    for (std::size_t i = 0; i < attributes.get_length(); ++i) {
        const xml::Node attribute = attributes.get_item(i);
        if (std::ranges::find(wanted, NodeName(attribute)) == wanted.end()) {
            continue;
        }
        entries.reserve(3 * attributes.get_length());
        entries.emplace_back(NodeName(attribute));
        entries.emplace_back(attribute.get_text(buffer));
        entries.emplace_back();
    }
    return entries;
}

bool HasEntry(const AttributeEntries& entries, std::size_t count, const std::string& name) {
    for (std::size_t i = 0; i < count; i += 3) {
        if (entries[i] == name) {
            return true;
        }
    }
    return false;
}

/// The nearest element counts: what is further out under the same name is left out.
void AppendInherited(AttributeEntries& entries, const AttributeEntries& inherited) {
    const std::size_t own = entries.size();
    for (std::size_t i = 0; i < inherited.size(); i += 3) {
        if (!HasEntry(entries, own, inherited[i])) {
            entries.insert(entries.end(), {inherited[i], inherited[i + 1], inherited[i + 2]});
        }
    }
}

void EnterElement(xml::Node element, const std::list<std::string>& wanted, InheritedMemo& memo) {
    memo.levels.push_back(element);
    AttributeEntries entries = OwnEntries(element, wanted);
    if (entries.empty()) {
        return;
    }
    if (!memo.sources.empty()) {
        AppendInherited(entries, memo.sources.back().entries);
    }
    std::string composed;
    for (std::size_t i = 0; i < entries.size(); i += 3) {
        AppendEntry(composed, entries[i], entries[i + 1], entries[i + 2]);
    }
    memo.sources.push_back({memo.levels.size(), std::move(entries), std::move(composed)});
}

}  // namespace

std::string_view CollectInheritedAttributes(xml::Node parent, const std::list<std::string>& wanted,
                                            InheritedMemo& memo) {
    if (wanted.empty()) {
        return {};
    }
    const xml::Node known = memo.levels.empty() ? xml::Node() : memo.levels.back();
    std::vector<xml::Node>& entered = memo.entered;
    entered.clear();
    for (xml::Node node = parent; node != known && IsElement(node); node = node.get_parentNode()) {
        entered.push_back(node);
    }
    for (auto node = entered.rbegin(); node != entered.rend(); ++node) {
        EnterElement(*node, wanted, memo);
    }
    return memo.sources.empty() ? std::string_view() : memo.sources.back().composed;
}

void LeaveElement(xml::Node element, InheritedMemo& memo) {
    if (memo.levels.empty() || memo.levels.back() != element) {
        return;
    }
    if (!memo.sources.empty() && memo.sources.back().depth == memo.levels.size()) {
        memo.sources.pop_back();
    }
    memo.levels.pop_back();
}

}  // namespace ventrix
