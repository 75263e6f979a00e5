#include "markers/marker_format.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "markers/xml/characters.h"
#include "markers/xml/escaping.h"

namespace ventrix {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

struct ElementWord {
    std::size_t position;
    bool opens;
};

// Both element words begin with the same bytes. A search for those finds the next word of either kind in one
// scan; two searches, one per word, could each run to the end of the text for every word.
std::optional<ElementWord> NextElementWord(std::string_view text, std::size_t position) {
    constexpr std::string_view kHead = "QL_ELEM_";
    while ((position = text.find(kHead, position)) != kNone) {
        const std::size_t last = position + kHead.size();
        if (last < text.size() && (text[last] == 'S' || text[last] == 'E')) {
            return ElementWord{position, text[last] == 'S'};
        }
        position = last;
    }
    return std::nullopt;
}

/// The position after the balanced group whose opening word is at `start`; nothing if it is not balanced.
std::optional<std::size_t> ElementGroupEnd(std::string_view text, std::size_t start) {
    std::size_t position = start + QL_ELEM_S.size();
    std::size_t depth = 1;
    while (depth > 0) {
        const auto word = NextElementWord(text, position);
        if (!word) {
            return std::nullopt;
        }
        depth = word->opens ? depth + 1 : depth - 1;
        position = word->position + QL_ELEM_S.size();
    }
    return position;
}

}  // namespace

void PrependAttributeGroup(std::string& text, const AttributeEntries& entries) {
    if (entries.empty()) {
        return;
    }
    std::string group(QL_START);
    for (std::size_t i = 0; i + 2 < entries.size(); i += 3) {
        AppendEntry(group, entries[i], entries[i + 1], entries[i + 2]);
    }
    PrependComposedGroup(text, group.append(QL_END));
}

void PrependComposedGroup(std::string& text, std::string_view group) {
    const std::string formerEntries = TakeAttributeGroup(text);
    std::string merged(group.substr(0, group.size() - QL_END.size()));
    text.insert(0, merged.append(formerEntries).append(QL_END));
}

void AppendEntry(std::string& group, std::string_view name, std::string_view value, std::string_view target) {
    group.append(name).append(QL_EQ).append(value).append(QL_TARGET).append(target).append(QL_SEP);
}

std::string TakeAttributeGroup(std::string& text) {
    if (!text.starts_with(QL_START)) {
        return {};
    }
    const std::size_t end = text.find(QL_END);
    if (end == kNone) {
        return {};
    }
    std::string body = text.substr(QL_START.size(), end - QL_START.size());
    text.erase(0, end + QL_END.size());
    return body;
}

void ParseAttributeGroup(std::string_view text, AttributePairs& tagPairs, AttributePairs& targetPairs) {
    const std::size_t start = text.find(QL_START);
    const std::size_t end = start == kNone ? kNone : text.find(QL_END);
    if (end == kNone) {
        return;
    }
    // A QL_END in front of the QL_START does not close the group: it then runs to the end of the text.
    std::string_view body = text.substr(start + QL_START.size());
    if (end > start) {
        body = body.substr(0, end - start - QL_START.size());
    }
    while (!body.empty()) {
        const std::size_t equals = body.find(QL_EQ);
        const std::size_t target = body.find(QL_TARGET);
        const std::size_t separator = body.find(QL_SEP);
        if (equals == kNone || target == kNone || separator == kNone) {
            return;
        }
        // "QL_EQL_TARGET" contains both words, sharing the "Q". No value fits between them, so they count as
        // out of order too.
        const std::size_t valueStart = equals + QL_EQ.size();
        if (target < valueStart || separator < target) {
            return;
        }
        const std::size_t targetStart = target + QL_TARGET.size();
        const std::string_view targetName = body.substr(targetStart, separator - targetStart);
        AttributePairs& pairs = targetName.empty() ? tagPairs : targetPairs;
        pairs.emplace_back(targetName.empty() ? body.substr(0, equals) : targetName);
        pairs.emplace_back(body.substr(valueStart, target - valueStart));
        body.remove_prefix(separator + QL_SEP.size());
    }
}

// Removing a group can bring the bytes on either side of it together to a new QL_START, which opens a group
// in its turn. Starting again from the front after each removal would take quadratic time. Instead the kept
// bytes are copied up to each "T", the last byte of QL_START, and the end of the copy is compared: it shows
// both words of the text and words that a removal has formed.
std::string StripAttributeGroups(std::string_view text) {
    if (text.find(QL_START) == kNone) {
        return std::string(text);
    }
    std::string result;
    std::size_t position = 0;
    while (position < text.size()) {
        const std::size_t last = text.find(QL_START.back(), position);
        const std::size_t next = last == kNone ? text.size() : last + 1;
        result.append(text.substr(position, next - position));
        position = next;
        if (!result.ends_with(QL_START)) {
            continue;
        }
        // Only a QL_END after the QL_START closes its group. Without one the rest stays, as it does in
        // TakeAttributeGroup; RemoveMarkerWords removes the words at the end of the pass.
        const std::size_t end = text.find(QL_END, position);
        if (end == kNone) {
            return result.append(text.substr(position));
        }
        result.resize(result.size() - QL_START.size());
        position = end + QL_END.size();
    }
    return result;
}

std::string ComposeScopedGroups(const ScopedEntries& entries) {
    std::string result;
    for (std::size_t i = 0; i + 2 < entries.size(); i += 3) {
        result.append(QL_SA_S).append(entries[i]).append(QL_SEP).append(entries[i + 1]);
        result.append(QL_SEP).append(entries[i + 2]).append(QL_SA_E);
    }
    return result;
}

ScopedEntries TakeScopedGroups(std::string& text) {
    ScopedEntries entries;
    std::string_view rest = text;
    while (rest.starts_with(QL_SA_S)) {
        const std::size_t end = rest.find(QL_SA_E);
        if (end == kNone) {
            break;
        }
        const std::string_view body = rest.substr(QL_SA_S.size(), end - QL_SA_S.size());
        const std::size_t first = body.find(QL_SEP);
        const std::size_t second = first == kNone ? kNone : body.find(QL_SEP, first + QL_SEP.size());
        if (second != kNone) {
            const std::size_t attributeStart = first + QL_SEP.size();
            entries.emplace_back(body.substr(0, first));
            entries.emplace_back(body.substr(attributeStart, second - attributeStart));
            entries.emplace_back(body.substr(second + QL_SEP.size()));
        }
        rest.remove_prefix(end + QL_SA_E.size());
    }
    text.erase(0, text.size() - rest.size());
    return entries;
}

std::string WrapElementGroup(std::string_view xml) {
    std::string escaped(xml);
    EscapeMarkup(escaped);
    return std::string(QL_ELEM_S).append(escaped).append(QL_ELEM_E);
}

std::vector<std::string> SplitElementGroups(std::string_view text) {
    std::vector<std::string> pieces;
    // Splitting ends at the first group that is not balanced. The last QL_ELEM_E of the text need not be
    // compared with the first QL_ELEM_S: if none follows the opening word, the group is not balanced either.
    std::size_t start = 0;
    while ((start = text.find(QL_ELEM_S)) != kNone) {
        const auto end = ElementGroupEnd(text, start);
        if (!end) {
            break;
        }
        pieces.emplace_back(text.substr(0, start));
        pieces.emplace_back(text.substr(start, *end - start));
        text.remove_prefix(*end);
    }
    pieces.emplace_back(text);
    return pieces;
}

std::optional<std::string> ElementGroupXml(std::string_view piece) {
    const std::size_t end = piece.find(QL_ELEM_E);
    if (end == kNone) {
        return std::nullopt;
    }
    std::string xml(piece.substr(QL_ELEM_S.size(), end - QL_ELEM_S.size()));
    UnescapeMarkup(xml);
    return xml;
}

std::vector<std::string> SplitTagsValue(std::string_view tagsValue) {
    std::vector<std::string> tokens;
    std::size_t end = 0;
    while ((end = tagsValue.find(QL_SEP)) != kNone) {
        tokens.emplace_back(tagsValue.substr(0, end));
        tagsValue.remove_prefix(end + QL_SEP.size());
    }
    return tokens;
}

std::string RemoveMarkerWords(std::string_view text) {
    std::string result(text);
    if (text.find("QL_") == kNone) {
        return result;
    }
    // QL_SEP is removed twice, since the removal of a word can form a new QL_SEP from the bytes around it.
    for (const std::string_view word :
         {QL_ELEM_S, QL_ELEM_E, QL_START, QL_END, QL_SEP, QL_EQ, QL_TARGET, QL_SEP, QL_SA_S, QL_SA_E}) {
        ReplaceAll(result, word, {});
    }
    return result;
}

void EscapeMarkup(std::string& text) {
    // One pass over all five characters gives the same as five passes that begin with the ampersand.
    std::string escaped;
    xml::AppendEscaped(escaped, text, xml::kMarkupEscapes);
    text = std::move(escaped);
}

void UnescapeMarkup(std::string& text) {
    std::string unescaped;
    std::string_view rest = text;
    for (std::size_t mark = 0; (mark = rest.find('&')) != std::string_view::npos;) {
        unescaped += rest.substr(0, mark);
        rest.remove_prefix(mark);
        const auto pair = std::ranges::find_if(xml::kMarkupCharacters, [&](const auto& candidate) {
            return rest.starts_with(candidate.second);
        });
        const bool isEscape = pair != xml::kMarkupCharacters.end();
        unescaped += isEscape ? pair->first : '&';
        rest.remove_prefix(isEscape ? pair->second.size() : 1);
    }
    text = unescaped.append(rest);
}

void ReplaceAll(std::string& text, std::string_view oldText, std::string_view newText) {
    if (oldText.empty()) {
        return;
    }
    std::size_t found = text.find(oldText);
    if (found == std::string::npos) {
        return;
    }
    std::string result;
    result.reserve(text.size());
    std::size_t position = 0;
    while (found != std::string::npos) {
        result.append(text, position, found - position).append(newText);
        position = found + oldText.size();
        found = text.find(oldText, position);
    }
    result.append(text, position);
    text = std::move(result);
}

std::string TrimBlanks(std::string_view text) {
    const auto first = std::ranges::find_if_not(text, xml::IsWhitespace);
    const auto last =
        std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), xml::IsWhitespace).base();
    return {first, last};
}

}  // namespace ventrix
