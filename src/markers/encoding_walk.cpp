#include "markers/encoding_walk.h"

#include <vector>

#include "markers/dom_helpers.h"

namespace ventrix {
namespace {

/// The element's scoped attributes: for each attribute in document order, the groups that name it.
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

/// True if the element stands in running text.
bool StandsInText(xml::Node element, const PublishParams& record, EncodingMemo& memo) {
    if (IsFilledTextNode(element.get_previousSibling()) || IsFilledTextNode(element.get_nextSibling())) {
        return true;
    }
    if (!memo.textFollows) {
        memo.textFollows = FollowedByFilledText(element, record.elements);
    }
    return *memo.textFollows;
}

/// The inherited group with the path entries behind what it holds.
void ComposeWithPaths(xml::Node parent, std::string_view inherited, PublishParams& record,
                      EncodingMemo& memo) {
    std::string& group = memo.groupWithPaths;
    group = inherited.empty() ? QL_START : inherited.substr(0, inherited.size() - QL_END.size());
    const std::size_t namesLeft = record.addSourcePath.size();
    AddPathEntries(parent, group, record, memo.stamps);
    if (group == QL_START) {
        group.clear();
    } else {
        group += QL_END;
    }
    memo.group = group;
    // A name that was crossed off gives the next text of the same element other entries.
    memo.groupOwner = record.addSourcePath.size() == namesLeft ? parent : xml::Node();
}

/// Leaves in the memo what a text directly in this element carries.
void FindGroup(xml::Node parent, PublishParams& record, EncodingMemo& memo) {
    if (memo.groupOwner == parent) {
        return;
    }
    const std::string_view inherited = CollectInheritedAttributes(parent, record.attributes, memo.inherited);
    if (HasPathEntries(parent, record)) {
        ComposeWithPaths(parent, inherited, record, memo);
    } else {
        memo.group = inherited;
        memo.groupOwner = parent;
    }
}

}  // namespace

void EncodeTextNode(xml::Node textNode, PublishParams& record, EncodingMemo& memo) {
    FindGroup(textNode.get_parentNode(), record, memo);
    if (!memo.group.empty()) {
        PrependGroup(textNode, memo.group);
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
    if (xml::Node textNode = FirstFilledTextNode(element)) {
        textNode.prepend_text(ComposeScopedGroups(entries));
    }
}

xml::Node EncodeInlineElement(xml::Document& document, xml::Node element, const PublishParams& record,
                              EncodingMemo& memo) {
    xml::Node parent = element.get_parentNode();
    if (!IsElement(parent)) {
        return {};
    }
    const xml::Node next = element.get_nextSibling();
    if (StandsInText(element, record, memo)) {
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
        const bool passedOver = IsTextNode(node) || (IsElement(node) && IsListedElement(node, elements));
        if (!passedOver) {
            return false;
        }
    }
    return false;
}

}  // namespace ventrix
