#include "markers/decoding_walk.h"

#include <utility>

#include "markers/dom_helpers.h"

namespace ventrix {
namespace {

constexpr char kDefaultTagsAttribute[] = "data-twtags";
constexpr char kMarkerPrefix[] = "QL_";  // Every marker word begins with it.

std::string_view TagsAttribute(const PublishParams& params) {
    return params.targetAttr.empty() ? std::string_view(kDefaultTagsAttribute) : params.targetAttr;
}

/// The entry of the innermost open element.
TagTokens& TokensOf(xml::Node element, DecodingState& state) {
    if (state.open.empty() || state.open.back().element != element) {
        state.open.emplace_back().element = element;
    }
    return state.open.back();
}

/// Adds what follows the value that the tokens were read from.
void AddTokens(TagTokens& tokens, std::string_view value) {
    const std::string text = tokens.tail.append(value);
    for (std::string& token : SplitTagsValue(text)) {
        tokens.firstPositions.emplace(std::move(token), tokens.count++);
    }
    const std::size_t last = text.rfind(QL_SEP);
    tokens.tail = last == std::string::npos ? text : text.substr(last + QL_SEP.size());
}

/// Reads the tokens that the attribute has. Most elements have one text node, and so no tokens when it is
/// decoded.
void ReadTokens(TagTokens& tokens, std::string_view attribute) {
    if (!tokens.isRead) {
        const std::string value = AttributeValue(tokens.element, attribute);
        tokens.isRead = !value.empty();
        AddTokens(tokens, value);
    }
}

/// Names are at the even positions. A name that occurs first as a value counts as new.
bool HasName(const TagTokens& tokens, const std::string& name) {
    const auto found = tokens.firstPositions.find(name);
    return found != tokens.firstPositions.end() && found->second % 2 == 0;
}

void ApplyAttributeGroup(xml::Document& document, xml::Node element, std::string_view text,
                         const PublishParams& params, DecodingState& state) {
    AttributePairs tagPairs;
    AttributePairs targetPairs;
    ParseAttributeGroup(text, tagPairs, targetPairs);
    if (!tagPairs.empty()) {
        ApplyTagPairs(document, element, tagPairs, params, state);
    }
    for (std::size_t i = 0; i < targetPairs.size(); i += 2) {
        SetOrAppendAttribute(document, element, targetPairs[i], targetPairs[i + 1], true);
        if (targetPairs[i] == TagsAttribute(params)) {
            state.open.clear();
        }
    }
}

/// Whether one of the entries is for the tags attribute.
bool AddsTags(const ScopedEntries& entries, const PublishParams& params) {
    for (std::size_t i = 0; i < entries.size(); i += 3) {
        if (entries[i + 1] == TagsAttribute(params)) {
            return true;
        }
    }
    return false;
}

}  // namespace

// The order of the steps matters, since each reads what the one before has left of the text. Attribute groups
// go first, wherever they are: only without them do the scoped groups begin the text. What remains after the
// scoped groups is split at its element groups. If there are any, the pieces replace the text node, which
// then need not be written.
xml::Node DecodeTextNode(xml::Document& document, xml::Node textNode, const PublishParams& params,
                         DecodingState& state) {
    std::string buffer;
    const std::string_view content = textNode.get_text(buffer);
    // Without a marker word the text would stay as it is. Most text nodes of a file end here, without a copy.
    if (content.find(kMarkerPrefix) == std::string_view::npos) {
        return textNode.get_nextSibling();
    }
    xml::Node parent = textNode.get_parentNode();
    ApplyAttributeGroup(document, parent, content, params, state);
    std::string text = StripAttributeGroups(content);
    ScopedEntries entries = TakeScopedGroups(text);
    if (AddsTags(entries, params)) {
        state.open.clear();
    }
    ApplyScopedEntries(document, textNode, std::move(entries));
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

void LeaveElement(xml::Node element, DecodingState& state) {
    if (!state.open.empty() && state.open.back().element == element) {
        state.open.pop_back();
    }
}

void ApplyTagPairs(xml::Document& document, xml::Node element, const AttributePairs& tagPairs,
                   const PublishParams& params, DecodingState& state) {
    const std::string_view attribute = TagsAttribute(params);
    TagTokens& tokens = TokensOf(element, state);
    ReadTokens(tokens, attribute);
    std::string added;
    for (std::size_t i = 0; i < tagPairs.size(); i += 2) {
        if (!HasName(tokens, tagPairs[i])) {
            added.append(tagPairs[i]).append(QL_SEP).append(tagPairs[i + 1]).append(QL_SEP);
        }
    }
    // Appending nothing would still rewrite the attribute, and not leave it as the file has it.
    if (added.empty()) {
        return;
    }
    SetOrAppendAttribute(document, element, attribute, added, false);
    if (tokens.isRead) {
        AddTokens(tokens, added);
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
