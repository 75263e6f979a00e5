#include "markers/inherited_attributes.h"

#include <algorithm>

#include "markers/dom_helpers.h"
#include "markers/marker_format.h"

namespace ventrix {
namespace {

using Source = InheritedAttributes::Source;

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

/// Appends the entries of the enclosing group, apart from the names that the element itself has.
void AppendInherited(Source& source, const Source& outer) {
    const auto ownCount = static_cast<std::ptrdiff_t>(source.entries.size());
    std::size_t begin = QL_START.size();
    for (const auto& [name, end] : outer.entries) {
        const auto ownEnd = source.entries.begin() + ownCount;
        if (std::ranges::find(source.entries.begin(), ownEnd, name, &InheritedAttributes::Entry::name) ==
            ownEnd) {
            source.group.append(outer.group, begin, end - begin);
            source.entries.push_back({name, source.group.size()});
        }
        begin = end;
    }
}

/// Adds a source for the entered element at this depth, if it has wanted attributes.
void AddSource(std::size_t depth, const std::list<std::string>& wanted, InheritedAttributes& inherited) {
    const xml::NamedNodeMap attributes = inherited.elements[depth - 1].get_attributes();
    if (attributes.get_length() == 0) {
        return;
    }
    if (inherited.sourceCount == inherited.sources.size()) {
        inherited.sources.push_back(std::make_unique<Source>());
    }
    Source& source = *inherited.sources[inherited.sourceCount];
    source.depth = depth;
    source.group = QL_START;
    source.entries.clear();
    AppendOwn(source, attributes, wanted, inherited.buffer);
    if (source.entries.empty()) {
        return;
    }
    if (inherited.sourceCount > 0) {
        AppendInherited(source, *inherited.sources[inherited.sourceCount - 1]);
    }
    source.group += QL_END;
    ++inherited.sourceCount;
}

/// Enters the elements between the last one entered and `parent`, outermost first.
void EnterTo(xml::Node parent, const std::list<std::string>& wanted, InheritedAttributes& inherited) {
    std::vector<xml::Node>& elements = inherited.elements;
    const std::size_t entered = elements.size();
    const xml::Node last = elements.empty() ? xml::Node() : elements.back();
    for (xml::Node node = parent; node != last && IsElement(node); node = node.get_parentNode()) {
        elements.push_back(node);
    }
    std::reverse(elements.begin() + static_cast<std::ptrdiff_t>(entered), elements.end());
    for (std::size_t depth = entered + 1; depth <= elements.size(); ++depth) {
        AddSource(depth, wanted, inherited);
    }
}

}  // namespace

std::string_view CollectInheritedAttributes(xml::Node parent, const std::list<std::string>& wanted,
                                            InheritedAttributes& inherited) {
    if (wanted.empty()) {
        return {};
    }
    if (inherited.elements.empty() || inherited.elements.back() != parent) {
        EnterTo(parent, wanted, inherited);
    }
    return inherited.sourceCount == 0 ? std::string_view()
                                      : inherited.sources[inherited.sourceCount - 1]->group;
}

void LeaveElement(xml::Node element, InheritedAttributes& inherited) {
    if (inherited.elements.empty() || inherited.elements.back() != element) {
        return;
    }
    if (inherited.sourceCount > 0 &&
        inherited.sources[inherited.sourceCount - 1]->depth == inherited.elements.size()) {
        --inherited.sourceCount;
    }
    inherited.elements.pop_back();
}

}  // namespace ventrix
