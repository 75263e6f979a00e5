#include "markers/inherited_attributes.h"

#include <algorithm>

#include "markers/dom_helpers.h"
#include "markers/marker_format.h"

namespace ventrix {
namespace {

using Source = InheritedMemo::Source;

void AppendOwn(Source& source, const xml::NamedNodeMap& attributes, const std::list<std::string>& wanted,
               std::string& buffer) {
    for (std::size_t i = 0; i < attributes.get_length(); ++i) {
        const xml::Node attribute = attributes.get_item(i);
        const std::string_view name = NodeName(attribute);
        if (std::ranges::find(wanted, name) != wanted.end()) {
            AppendEntry(source.group, name, attribute.get_text(buffer), {});
            source.entries.push_back({name, source.group.size()});
        }
    }
}

/// The nearest element counts: what is further out under the same name is left out.
void AppendInherited(Source& source, const Source& outer) {
    const std::size_t own = source.entries.size();
    std::size_t begin = QL_START.size();
    for (const auto& [name, end] : outer.entries) {
        const auto ownEnd = source.entries.begin() + static_cast<std::ptrdiff_t>(own);
        if (std::ranges::find(source.entries.begin(), ownEnd, name, &InheritedMemo::Entry::name) == ownEnd) {
            source.group.append(outer.group, begin, end - begin);
            source.entries.push_back({name, source.group.size()});
        }
        begin = end;
    }
}

void EnterElement(xml::Node element, const std::list<std::string>& wanted, InheritedMemo& memo) {
    memo.levels.push_back(element);
    const xml::NamedNodeMap attributes = element.get_attributes();
    if (attributes.get_length() == 0) {
        return;
    }
    if (memo.sourceCount == memo.sources.size()) {
        memo.sources.push_back(std::make_unique<Source>());
    }
    Source& source = *memo.sources[memo.sourceCount];
    source.depth = memo.levels.size();
    source.group = QL_START;
    source.entries.clear();
    AppendOwn(source, attributes, wanted, memo.buffer);
    if (source.entries.empty()) {
        return;
    }
    if (memo.sourceCount > 0) {
        AppendInherited(source, *memo.sources[memo.sourceCount - 1]);
    }
    source.group += QL_END;
    ++memo.sourceCount;
}

/// Enters the elements from the last one known inwards.
void EnterTo(xml::Node parent, const std::list<std::string>& wanted, InheritedMemo& memo) {
    const xml::Node known = memo.levels.empty() ? xml::Node() : memo.levels.back();
    std::vector<xml::Node>& entered = memo.entered;
    entered.clear();
    for (xml::Node node = parent; node != known && IsElement(node); node = node.get_parentNode()) {
        entered.push_back(node);
    }
    for (auto node = entered.rbegin(); node != entered.rend(); ++node) {
        EnterElement(*node, wanted, memo);
    }
}

}  // namespace

std::string_view CollectInheritedAttributes(xml::Node parent, const std::list<std::string>& wanted,
                                            InheritedMemo& memo) {
    if (wanted.empty()) {
        return {};
    }
    EnterTo(parent, wanted, memo);
    return memo.sourceCount == 0 ? std::string_view() : memo.sources[memo.sourceCount - 1]->group;
}

void LeaveElement(xml::Node element, InheritedMemo& memo) {
    if (memo.levels.empty() || memo.levels.back() != element) {
        return;
    }
    if (memo.sourceCount > 0 && memo.sources[memo.sourceCount - 1]->depth == memo.levels.size()) {
        --memo.sourceCount;
    }
    memo.levels.pop_back();
}

}  // namespace ventrix
