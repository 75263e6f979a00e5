#include "markers/decoding_walk.h"

#include <algorithm>
#include <span>
#include <utility>

#include "markers/dom_helpers.h"
#include "markers/xml/characters.h"
#include "markers/xml/escaping.h"

namespace ventrix {
namespace {

constexpr char kDefaultTagsAttribute[] = "data-twtags";
constexpr std::size_t kLongValue = 1000;  // Bytes; a shorter value is searched each time.

std::string_view TagsAttribute(const PublishParams& params) {
    return params.targetAttr.empty() ? std::string_view(kDefaultTagsAttribute) : params.targetAttr;
}

/// The tokens of the innermost open element, if they are kept.
TagTokens* KeptTokens(xml::Node element, DecodingState& state) {
    const bool areKept = !state.open.empty() && state.open.back().element == element;
    return areKept ? &state.open.back() : nullptr;
}

/// Adds what follows the value that the tokens were read from.
void AddTokens(TagTokens& tokens, std::string_view value) {
    const std::string text = tokens.tail.append(value);
    for (const std::string_view token : SplitTagsValue(text)) {
        tokens.firstPositions.emplace(token, tokens.count++);
    }
    const std::size_t last = text.rfind(QL_SEP);
    tokens.tail = last == std::string::npos ? text : text.substr(last + QL_SEP.size());
}

// Names are at the even positions. A name that occurs first as a value counts as new.

bool HasName(const TagTokens& tokens, std::string_view name) {
    const auto found = tokens.firstPositions.find(std::string(name));
    return found != tokens.firstPositions.end() && found->second % 2 == 0;
}

bool HasName(std::string_view value, std::string_view name) {
    if (value.empty()) {
        return false;
    }
    const std::vector<std::string_view> tokens = SplitTagsValue(value);
    const auto found = std::ranges::find(tokens, name);
    return found != tokens.end() && (found - tokens.begin()) % 2 == 0;
}

/// Applies the pairs of the state.
void ApplyAttributes(xml::Document& document, xml::Node element, const PublishParams& params,
                     DecodingState& state) {
    if (!state.encoded.tagPairs.empty()) {
        ApplyTagPairs(document, element, state.encoded.tagPairs, params, state);
    }
    const AttributePairs& targetPairs = state.encoded.targetPairs;
    for (std::size_t i = 0; i < targetPairs.size(); i += 2) {
        SetOrAppendAttribute(document, element, targetPairs[i], targetPairs[i + 1]);
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

/// The text of a node after the pass. No later step of the pass reads the words that are removed here.
std::string_view WithoutMarkerWords(std::string_view text, std::string& buffer) {
    return HasMarkerPrefix(text) ? buffer = RemoveMarkerWords(text) : text;
}

void InsertElement(xml::Document& document, std::string_view xmlText, xml::Node textNode) {
    const xml::Node element = ParseElementXml(document, xmlText);
    if (!element) {
        return;
    }
    // A reference may stand for a part of a word.
    if (HasMarkerPrefix(xmlText) || xml::FindByte(xmlText, '&') != std::string_view::npos) {
        ClearMarkerWords(element);
    }
    textNode.get_parentNode().insertBefore(element, textNode);
}

void InsertElementGroup(xml::Document& document, std::string_view piece, xml::Node textNode) {
    if (const auto xmlText = ElementGroupXml(piece)) {
        InsertElement(document, *xmlText, textNode);
    }
}

/// Whether the source bytes of a text may stand for something else.
bool MustDecode(std::string_view source) {
    return xml::FindAnyByte(source, 0, '&', '\r') != std::string_view::npos;
}

/// What the escaped ampersand in front of the text stands for after a second unescaping, and the bytes of the
/// text that belong to it.
xml::NamedCharacter SecondLevelAt(std::string_view text) {
    for (const auto& [character, entity] : xml::kMarkupCharacters) {
        if (text.starts_with(entity.substr(1))) {
            return {character, entity.size() - 1};
        }
    }
    return {'&', 0};
}

/// Reads the XML of an element group from its source bytes, which escape it twice. `xml` is overwritten.
/// Mostly the ampersand is the only character that the second escaping had to escape, and one pass undoes
/// both.
void ReadElementXml(std::string_view source, std::string& xml) {
    constexpr std::string_view kAmpersand = "&amp;";
    xml.clear();
    std::string_view rest = source;
    std::size_t at = 0;
    while ((at = xml::FindAnyByte(rest, 0, '&', '\r')) != std::string_view::npos) {
        if (!rest.substr(at).starts_with(kAmpersand)) {
            xml::DecodeText(source, xml);
            UnescapeMarkup(xml);
            return;
        }
        const xml::NamedCharacter named = SecondLevelAt(rest.substr(at + kAmpersand.size()));
        xml.append(rest, 0, at) += named.character;
        rest.remove_prefix(at + kAmpersand.size() + named.length);
    }
    xml += rest;
}

/// Puts the parts of the state, which split the source of the text node, in its place. The text node itself
/// becomes the last one.
void InsertParts(xml::Document& document, xml::Node textNode, DecodingState& state) {
    std::vector<EncodedText::Part>& parts = state.encoded.parts;
    const bool endsWithText = !parts.empty() && !parts.back().isElement;
    const std::string_view last = endsWithText ? parts.back().text : std::string_view();
    for (const EncodedText::Part& part : std::span(parts).first(parts.size() - (endsWithText ? 1 : 0))) {
        if (part.isElement) {
            ReadElementXml(part.text, state.elementXml);
            InsertElement(document, state.elementXml, textNode);
        } else {
            textNode.get_parentNode().insertBefore(document.createTextPart(textNode, part.text), textNode);
        }
    }
    textNode.put_source(last);
}

/// Decodes a text node as an encoding pass has left it, as most are: what remains of its text stays where it
/// is in the file's bytes. False, without a change, for any other text node.
bool DecodeInPlace(xml::Document& document, xml::Node textNode, const PublishParams& params,
                   DecodingState& state) {
    const std::string_view source = textNode.get_source();
    EncodedText& encoded = state.encoded;
    if (source.data() == nullptr || !SplitEncodedText(source, encoded) ||
        MustDecode(encoded.attributeGroup)) {
        return false;
    }
    const bool isUnmarked = encoded.parts.size() == 1 && encoded.parts[0].text.size() == source.size();
    if (!isUnmarked) {
        ApplyAttributes(document, textNode.get_parentNode(), params, state);
        InsertParts(document, textNode, state);
    }
    return true;
}

// Decodes any text node. The order of the steps matters, since each reads what the one before has left of the
// text. Attribute groups go first, wherever they are: only without them do the scoped groups begin the text.
// What remains after the scoped groups is split at its element groups, and the marker words left in the
// pieces are removed.
void DecodeContent(xml::Document& document, xml::Node textNode, const PublishParams& params,
                   DecodingState& state) {
    const std::string_view content = textNode.get_text(state.content);
    if (!HasMarkerPrefix(content)) {
        return;
    }
    EncodedText& encoded = state.encoded;
    encoded.tagPairs.clear();
    encoded.targetPairs.clear();
    ParseAttributeGroup(content, encoded.tagPairs, encoded.targetPairs);
    ApplyAttributes(document, textNode.get_parentNode(), params, state);
    std::string_view text = StripAttributeGroups(content, state.stripped);
    ScopedEntries entries = TakeScopedGroups(text);
    if (AddsTags(entries, params)) {
        state.open.clear();
    }
    ApplyScopedEntries(document, textNode, std::move(entries));
    if (HasMarkerPrefix(text)) {
        InsertPieces(document, SplitElementGroups(text), textNode);
    } else {
        textNode.put_text(text);
    }
}

}  // namespace

xml::Node DecodeTextNode(xml::Document& document, xml::Node textNode, const PublishParams& params,
                         DecodingState& state) {
    if (!DecodeInPlace(document, textNode, params, state)) {
        DecodeContent(document, textNode, params, state);
    }
    return textNode.get_nextSibling();
}

void LeaveElement(xml::Node element, DecodingState& state) {
    if (!state.open.empty() && state.open.back().element == element) {
        state.open.pop_back();
    }
}

void ApplyTagPairs(xml::Document& document, xml::Node element, const AttributePairs& tagPairs,
                   const PublishParams& params, DecodingState& state) {
    const std::string_view attribute = TagsAttribute(params);
    xml::Node node = AttributeNode(element, attribute);
    TagTokens* tokens = KeptTokens(element, state);
    std::string buffer;
    const std::string_view value = tokens == nullptr ? node.get_text(buffer) : std::string_view();
    if (value.size() > kLongValue) {
        tokens = &state.open.emplace_back();
        tokens->element = element;
        AddTokens(*tokens, value);
    }
    std::string& added = state.added;
    added.clear();
    for (std::size_t i = 0; i < tagPairs.size(); i += 2) {
        if (tokens == nullptr ? !HasName(value, tagPairs[i]) : !HasName(*tokens, tagPairs[i])) {
            added.append(tagPairs[i]).append(QL_SEP).append(tagPairs[i + 1]).append(QL_SEP);
        }
    }
    // Appending nothing would still rewrite the attribute, and not leave it as the file has it.
    if (added.empty()) {
        return;
    }
    if (node) {
        node.append_text(added);
    } else {
        AddAttribute(document, element, attribute, added);
    }
    if (tokens != nullptr) {
        AddTokens(*tokens, added);
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

void InsertPieces(xml::Document& document, const std::vector<std::string_view>& pieces, xml::Node textNode) {
    xml::Node parent = textNode.get_parentNode();
    std::string buffer;
    for (const std::string_view piece : std::span(pieces).first(pieces.size() - 1)) {
        if (piece.starts_with(QL_ELEM_S)) {
            InsertElementGroup(document, piece, textNode);
        } else {
            parent.insertBefore(NewTextNode(document, WithoutMarkerWords(piece, buffer)), textNode);
        }
    }
    // After a group, an unbalanced one does not stay in the text.
    const bool endsWithGroup = pieces.size() > 1 && pieces.back().starts_with(QL_ELEM_S);
    if (endsWithGroup) {
        InsertElementGroup(document, pieces.back(), textNode);
    }
    textNode.put_text(endsWithGroup ? std::string_view() : WithoutMarkerWords(pieces.back(), buffer));
}

void ClearMarkerWords(xml::Node element) {
    std::string buffer;
    for (xml::Node node = NextInSubtree(element, element, true); node;
         node = NextInSubtree(node, element, IsElement(node))) {
        if (!IsFilledTextNode(node)) {
            continue;
        }
        const std::string_view text = node.get_text(buffer);
        if (HasMarkerPrefix(text)) {
            node.put_text(RemoveMarkerWords(text));
        }
    }
}

}  // namespace ventrix
