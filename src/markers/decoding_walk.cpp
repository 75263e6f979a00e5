#include "markers/decoding_walk.h"

#include <unordered_map>

#include "markers/dom_helpers.h"

namespace ventrix {
namespace {

constexpr char kDefaultTagsAttribute[] = "data-twtags";
constexpr char kMarkerPrefix[] = "QL_";  // Every marker word begins with it.

/// The position of each token's first occurrence.
std::unordered_map<std::string_view, std::size_t> FirstPositions(const std::vector<std::string>& tokens) {
    std::unordered_map<std::string_view, std::size_t> positions;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        positions.emplace(tokens[i], i);
    }
    return positions;
}

void ApplyAttributeGroup(xml::Document& document, xml::Node element, std::string_view text,
                         const PublishParams& params) {
    AttributePairs tagPairs;
    AttributePairs targetPairs;
    ParseAttributeGroup(text, tagPairs, targetPairs);
    if (!tagPairs.empty()) {
        ApplyTagPairs(document, element, tagPairs, params);
    }
    for (std::size_t i = 0; i < targetPairs.size(); i += 2) {
        SetOrAppendAttribute(document, element, targetPairs[i], targetPairs[i + 1], true);
    }
}

}  // namespace

// The order of the steps matters, since each reads what the one before has left of the text. Attribute groups
// go first, wherever they are: only without them do the scoped groups begin the text. What remains after the
// scoped groups is split at its element groups. If there are any, the pieces replace the text node, which
// then need not be written.
xml::Node DecodeTextNode(xml::Document& document, xml::Node textNode, const PublishParams& params) {
    std::string buffer;
    const std::string_view content = textNode.get_text(buffer);
    // Without a marker word the text would stay as it is. Most text nodes of a file end here, without a copy.
    if (content.find(kMarkerPrefix) == std::string_view::npos) {
        return textNode.get_nextSibling();
    }
    xml::Node parent = textNode.get_parentNode();
    ApplyAttributeGroup(document, parent, content, params);
    std::string text = StripAttributeGroups(content);
    ApplyScopedEntries(document, textNode, TakeScopedGroups(text));
    const std::vector<std::string> pieces = SplitElementGroups(text);
    if (pieces.size() < 2) {
        textNode.put_text(text);
        return textNode.get_nextSibling();
    }
    InsertPieces(document, pieces, textNode);
    const xml::Node next = textNode.get_nextSibling();
    parent.removeChild(textNode);
    return next;
}

void ApplyTagPairs(xml::Document& document, xml::Node element, const AttributePairs& tagPairs,
                   const PublishParams& params) {
    const std::string attribute = params.targetAttr.empty() ? kDefaultTagsAttribute : params.targetAttr;
    const std::vector<std::string> tokens = SplitTagsValue(AttributeValue(element, attribute));
    const auto positions = FirstPositions(tokens);
    std::string added;
    for (std::size_t i = 0; i < tagPairs.size(); i += 2) {
        // Names are at the even positions. A name that occurs first as a value counts as new.
        const auto found = positions.find(tagPairs[i]);
        if (found != positions.end() && found->second % 2 == 0) {
            continue;
        }
        added.append(tagPairs[i]).append(QL_SEP).append(tagPairs[i + 1]).append(QL_SEP);
    }
    // Appending nothing would still rewrite the attribute, and not leave it as the file has it.
    if (!added.empty()) {
        SetOrAppendAttribute(document, element, attribute, added, false);
    }
}

void ApplyScopedEntries(xml::Document& document, xml::Node textNode, ScopedEntries entries) {
    for (xml::Node node = textNode.get_parentNode(); IsElement(node) && !entries.empty();
         node = node.get_parentNode()) {
        const std::string_view name = NodeName(node);
        ScopedEntries remaining;
        for (std::size_t i = 0; i < entries.size(); i += 3) {
            const std::string &attribute = entries[i + 1], &value = entries[i + 2];
            if (entries[i] != name) {
                remaining.insert(remaining.end(), {entries[i], attribute, value});
            } else if (AttributeValue(node, attribute).empty()) {
                AddAttribute(document, node, attribute, value);
            }
        }
        entries = std::move(remaining);
    }
}

void InsertPieces(xml::Document& document, const std::vector<std::string>& pieces, xml::Node textNode) {
    xml::Node parent = textNode.get_parentNode();
    for (const std::string& piece : pieces) {
        if (!piece.starts_with(QL_ELEM_S)) {
            parent.insertBefore(NewTextNode(document, piece), textNode);
            continue;
        }
        const auto xmlText = ElementGroupXml(piece);
        if (const xml::Node element = xmlText ? ParseElementXml(document, *xmlText) : xml::Node()) {
            parent.insertBefore(element, textNode);
        }
    }
}

void ClearMarkerWords(xml::Node element) {
    std::string buffer;
    for (xml::Node node = NextInSubtree(element, element, true); node;
         node = NextInSubtree(node, element, IsElement(node))) {
        if (!IsFilledTextNode(node)) {
            continue;
        }
        const std::string_view text = node.get_text(buffer);
        if (text.find(kMarkerPrefix) != std::string_view::npos) {
            node.put_text(RemoveMarkerWords(text));
        }
    }
}

}  // namespace ventrix
