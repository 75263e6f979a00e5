#include "markers/encoding_walk.h"

#include <vector>

#include "markers/dom_helpers.h"

namespace ventrix {
namespace {

/// The element's scoped attributes: in document order, and for each attribute in the order of its groups.
ScopedEntries CollectScopedEntries(xml::Node element, const std::list<std::string>& scopedAttributes) {
    struct Target {
        const std::string &attribute, &targetElement, &targetAttribute;
    };
    std::vector<Target> targets;
    const std::string_view name = NodeName(element);
    for (auto field = scopedAttributes.begin(); field != scopedAttributes.end();) {
        const std::string& sourceElement = *field++;
        const std::string& attribute = *field++;
        const std::string& targetElement = *field++;
        const std::string& targetAttribute = *field++;
        if (sourceElement == name) {
            targets.push_back({attribute, targetElement, targetAttribute});
        }
    }
    ScopedEntries entries;
    if (targets.empty()) {
        return entries;
    }
    const auto attributes = element.get_attributes();
    for (std::size_t i = 0; i < attributes.get_length(); ++i) {
        const xml::Node attribute = attributes.get_item(i);
        for (const Target& target : targets) {
            if (target.attribute == NodeName(attribute)) {
                entries.insert(entries.end(),
                               {target.targetElement, target.targetAttribute, NodeText(attribute)});
            }
        }
    }
    return entries;
}

/// True if the element is part of running text.
bool IsInRunningText(xml::Node element, const PublishParams& params, EncodingState& state) {
    if (IsFilledTextNode(element.get_previousSibling()) || IsFilledTextNode(element.get_nextSibling())) {
        return true;
    }
    if (!state.textFollows) {
        state.textFollows = FollowedByFilledText(element, params.elements);
    }
    return *state.textFollows;
}

/// Composes the group of `parent` from the inherited group and the path entries.
void ComposeWithPaths(xml::Node parent, std::string_view inherited, const PublishParams& params,
                      EncodingState& state) {
    std::string& group = state.groupWithPaths;
    group = inherited.empty() ? QL_START : inherited.substr(0, inherited.size() - QL_END.size());
    const std::size_t namesBefore = state.stamps.sourceNames.size();
    AddPathEntries(parent, group, params, state.stamps);
    if (group == QL_START) {
        group.clear();
    } else {
        group += QL_END;
    }
    state.group = group;
    // When a name of addSourcePath has been used up, the element's next text node needs another group.
    state.groupOwner = state.stamps.sourceNames.size() == namesBefore ? parent : xml::Node();
}

/// Sets `state.group` to the group of the text nodes directly in `parent`. Most text nodes of an element get
/// the same group, so it is composed once.
void FindGroup(xml::Node parent, const PublishParams& params, EncodingState& state) {
    if (state.groupOwner == parent) {
        return;
    }
    const std::string_view inherited = CollectInheritedAttributes(parent, params.attributes, state.inherited);
    if (HasPathEntries(parent, params, state.stamps)) {
        ComposeWithPaths(parent, inherited, params, state);
    } else {
        state.group = inherited;
        state.groupOwner = parent;
    }
}

}  // namespace

void EncodeTextNode(xml::Node textNode, xml::Node parent, const PublishParams& params, EncodingState& state) {
    FindGroup(parent, params, state);
    if (!state.group.empty()) {
        PrependGroup(textNode, state.group);
    }
}

void EncodeScopedAttributes(xml::Node element, const std::list<std::string>& scopedAttributes) {
    if (scopedAttributes.empty()) {
        return;
    }
    const ScopedEntries entries = CollectScopedEntries(element, scopedAttributes);
    if (entries.empty()) {
        return;
    }
    // The walk has not reached that text node yet, so its attribute group will come in front of these groups.
    if (xml::Node textNode = FirstFilledTextNode(element)) {
        textNode.prepend_text(ComposeScopedGroups(entries));
    }
}

xml::Node EncodeInlineElement(xml::Document& document, xml::Node element, const PublishParams& params,
                              EncodingState& state) {
    xml::Node parent = element.get_parentNode();
    if (!IsElement(parent)) {
        return {};
    }
    const xml::Node next = element.get_nextSibling();
    if (IsInRunningText(element, params, state)) {
        parent.insertBefore(NewElementGroupNode(document, element), element);
        parent.removeChild(element);
    }
    return next;
}

bool FollowedByFilledText(xml::Node node, const std::list<std::string>& elements) {
    if (elements.empty()) {
        return false;
    }
    for (node = node.get_nextSibling(); node; node = node.get_nextSibling()) {
        if (IsFilledTextNode(node)) {
            return true;
        }
        const bool isSkipped = IsTextNode(node) || (IsElement(node) && IsListedElement(node, elements));
        if (!isSkipped) {
            return false;
        }
    }
    return false;
}

}  // namespace ventrix
