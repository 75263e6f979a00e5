#include "markers/marker_format.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "markers/xml/characters.h"
#include "markers/xml/escaping.h"

namespace ventrix {
namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::size_t kDistinct = 4;  ///< Where most marker words differ from each other.

constexpr std::string_view kMarkerPrefix = "QL_";      ///< Every marker word begins with it.
constexpr std::string_view kElementHead = "QL_ELEM_";  ///< Both element words begin with it.

/// The byte of a marker word to search for. A "Q" is rare in a text, but begins every marker word. The "D" of
/// QL_END is in no other one.
constexpr std::size_t RareByte(std::string_view word) {
    const std::size_t position = word.find('D');
    return position == kNone ? 0 : position;
}

/// As text.starts_with(word), for a marker word. Faster, since the word's length is known when this is
/// compiled.
template <const std::string_view& Word>
bool BeginsWith(std::string_view text) {
    return text.size() >= Word.size() && std::memcmp(text.data(), Word.data(), Word.size()) == 0;
}

/// As text.find(word, from), for a marker word. Faster, since the byte that it searches for is rare, one
/// further byte mostly tells whether the word is there, and the word's length is known when this is compiled.
template <const std::string_view& Word>
std::size_t FindWord(std::string_view text, std::size_t from = 0) {
    constexpr std::size_t kRare = RareByte(Word);
    constexpr std::size_t kFurther = std::min(kDistinct, Word.size() - 1);
    std::size_t rare = from + kRare;
    while ((rare = xml::FindByte(text, Word[kRare], rare)) != kNone) {
        const std::size_t found = rare - kRare;
        if (found + Word.size() > text.size()) {
            return kNone;
        }
        const char* const at = text.data() + found;
        if (at[kFurther] == Word[kFurther] && std::memcmp(at, Word.data(), Word.size()) == 0) {
            return found;
        }
        ++rare;
    }
    return kNone;
}

enum class EntryWordKind { kOther, kEquals, kTarget, kSeparator };

struct EntryWord {
    std::size_t position = kNone;
    EntryWordKind kind = EntryWordKind::kOther;
};

/// The word of an entry that the text begins with.
EntryWordKind EntryWordAt(std::string_view text) {
    const char distinct = text.size() > kDistinct ? text[kDistinct] : '\0';
    if (distinct == QL_EQ[kDistinct]) {
        return BeginsWith<QL_EQ>(text) ? EntryWordKind::kEquals : EntryWordKind::kOther;
    }
    if (distinct == QL_TARGET[kDistinct]) {
        return BeginsWith<QL_TARGET>(text) ? EntryWordKind::kTarget : EntryWordKind::kOther;
    }
    return BeginsWith<QL_SEP>(text) ? EntryWordKind::kSeparator : EntryWordKind::kOther;
}

/// The first of the words of an entry at or after `from`.
EntryWord NextEntryWord(std::string_view text, std::size_t from) {
    while ((from = xml::FindByte(text, QL_EQ.front(), from)) != kNone) {
        const EntryWordKind kind = EntryWordAt(text.substr(from));
        if (kind != EntryWordKind::kOther) {
            return {from, kind};
        }
        ++from;
    }
    return {};
}

struct ElementWord {
    std::size_t position;
    bool opens;
};

// Both element words begin with the same bytes. A search for those finds the next word of either kind in one
// scan; two searches, one per word, could each run to the end of the text for every word.
std::optional<ElementWord> NextElementWord(std::string_view text, std::size_t position) {
    while ((position = FindWord<kElementHead>(text, position)) != kNone) {
        const std::size_t last = position + kElementHead.size();
        if (last < text.size() && (text[last] == 'S' || text[last] == 'E')) {
            return ElementWord{position, text[last] == 'S'};
        }
        position = last;
    }
    return std::nullopt;
}

/// The length of the start of `rest` that completes a QL_START begun by the end of `text`; 0 if there is
/// none.
std::size_t CompletedStart(std::string_view text, std::string_view rest) {
    for (std::size_t begun = std::min(text.size(), QL_START.size() - 1); begun > 0; --begun) {
        if (text.ends_with(QL_START.substr(0, begun)) && rest.starts_with(QL_START.substr(begun))) {
            return QL_START.size() - begun;
        }
    }
    return 0;
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

/// Takes the bytes in front of the next "Q" and the marker word that must begin there.
template <const std::string_view& Word>
bool TakeUpTo(std::string_view& text, std::string_view& before) {
    const std::size_t found = std::min(xml::FindByte(text, Word.front()), text.size());
    before = text.substr(0, found);
    text.remove_prefix(found);
    if (!BeginsWith<Word>(text)) {
        return false;
    }
    text.remove_prefix(Word.size());
    return true;
}

/// Takes the attribute group that the text begins with. Only the first one of a text counts.
bool TakeEncodedAttributes(std::string_view& text, EncodedText& encoded) {
    const bool isFirst = encoded.attributeGroup.data() == nullptr;
    text.remove_prefix(QL_START.size());
    const char* const begin = text.data();
    while (!BeginsWith<QL_END>(text)) {
        std::string_view name;
        std::string_view value;
        std::string_view target;
        if (!TakeUpTo<QL_EQ>(text, name) || !TakeUpTo<QL_TARGET>(text, value) ||
            !TakeUpTo<QL_SEP>(text, target)) {
            return false;
        }
        if (isFirst) {
            AttributePairs& pairs = target.empty() ? encoded.tagPairs : encoded.targetPairs;
            pairs.insert(pairs.end(), {target.empty() ? name : target, value});
        }
    }
    if (isFirst) {
        encoded.attributeGroup = {begin, text.data()};
    }
    text.remove_prefix(QL_END.size());
    return true;
}

bool TakeEncodedElement(std::string_view& text, EncodedText& encoded) {
    if (!BeginsWith<QL_ELEM_S>(text)) {
        return false;
    }
    text.remove_prefix(QL_ELEM_S.size());
    std::string_view xml;
    if (!TakeUpTo<QL_ELEM_E>(text, xml)) {
        return false;
    }
    encoded.parts.push_back({xml, true});
    return true;
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
    const std::size_t start = FindWord<QL_START>(text);
    const std::size_t end = start == kNone ? kNone : FindWord<QL_END>(text);
    if (end == kNone) {
        return;
    }
    // A QL_END in front of the QL_START does not close the group: it then runs to the end of the text.
    std::string_view body = text.substr(start + QL_START.size());
    if (end > start) {
        body = body.substr(0, end - start - QL_START.size());
    }
    while (!body.empty()) {
        // The first word of each kind counts, and they must be in this order. A further QL_EQ is part of the
        // value.
        const EntryWord equals = NextEntryWord(body, 0);
        if (equals.kind != EntryWordKind::kEquals) {
            return;
        }
        EntryWord target = equals;
        while (target.kind == EntryWordKind::kEquals) {
            target = NextEntryWord(body, target.position + 1);
        }
        const std::size_t separator =
            target.kind == EntryWordKind::kTarget ? FindWord<QL_SEP>(body, target.position) : kNone;
        // "QL_EQL_TARGET" contains both words, sharing the "Q". No value fits between them, so they count as
        // out of order too.
        const std::size_t valueStart = equals.position + QL_EQ.size();
        if (separator == kNone || target.position < valueStart) {
            return;
        }
        const std::size_t targetStart = target.position + QL_TARGET.size();
        const std::string_view targetName = body.substr(targetStart, separator - targetStart);
        AttributePairs& pairs = targetName.empty() ? tagPairs : targetPairs;
        pairs.push_back(targetName.empty() ? body.substr(0, equals.position) : targetName);
        pairs.push_back(body.substr(valueStart, target.position - valueStart));
        body.remove_prefix(separator + QL_SEP.size());
    }
}

// Removing a group can bring the bytes on either side of it together to a new QL_START, which opens a group
// in its turn. Starting again from the front after each removal would take quadratic time. Instead, the bytes
// around each removal are compared before the rest is searched for the next QL_START.
std::string_view StripAttributeGroups(std::string_view text, std::string& buffer) {
    std::size_t start = FindWord<QL_START>(text);
    std::size_t end = start == kNone ? kNone : FindWord<QL_END>(text, start + QL_START.size());
    if (end == kNone) {
        return text;
    }
    buffer.clear();
    std::string_view rest = text;
    while (end != kNone) {
        buffer += rest.substr(0, start);
        rest.remove_prefix(end + QL_END.size());
        if (const std::size_t completed = CompletedStart(buffer, rest); completed != 0) {
            end = FindWord<QL_END>(rest, completed);
            if (end != kNone) {
                buffer.resize(buffer.size() - (QL_START.size() - completed));
                start = 0;
            }
        } else {
            start = FindWord<QL_START>(rest);
            end = start == kNone ? kNone : FindWord<QL_END>(rest, start + QL_START.size());
        }
    }
    // Only a QL_END after the QL_START closes its group. Without one the rest stays, as it does in
    // TakeAttributeGroup; RemoveMarkerWords removes the words at the end.
    if (buffer.empty()) {
        return rest;
    }
    return buffer += rest;
}

bool SplitEncodedText(std::string_view text, EncodedText& encoded) {
    encoded.parts.clear();
    encoded.tagPairs.clear();
    encoded.targetPairs.clear();
    encoded.attributeGroup = {};
    while (!text.empty()) {
        const std::size_t plain = std::min(xml::FindByte(text, QL_START.front()), text.size());
        if (plain != 0) {
            if (!encoded.parts.empty() && !encoded.parts.back().isElement) {
                return false;
            }
            encoded.parts.push_back({text.substr(0, plain), false});
            text.remove_prefix(plain);
        } else if (BeginsWith<QL_START>(text)) {
            if (!TakeEncodedAttributes(text, encoded)) {
                return false;
            }
        } else if (!TakeEncodedElement(text, encoded)) {
            return false;
        }
    }
    return true;
}

std::string ComposeScopedGroups(const ScopedEntries& entries) {
    std::string result;
    for (std::size_t i = 0; i + 2 < entries.size(); i += 3) {
        result.append(QL_SA_S).append(entries[i]).append(QL_SEP).append(entries[i + 1]);
        result.append(QL_SEP).append(entries[i + 2]).append(QL_SA_E);
    }
    return result;
}

ScopedEntries TakeScopedGroups(std::string_view& text) {
    ScopedEntries entries;
    while (BeginsWith<QL_SA_S>(text)) {
        const std::size_t end = FindWord<QL_SA_E>(text);
        if (end == kNone) {
            break;
        }
        const std::string_view body = text.substr(QL_SA_S.size(), end - QL_SA_S.size());
        const std::size_t first = FindWord<QL_SEP>(body);
        const std::size_t second = first == kNone ? kNone : FindWord<QL_SEP>(body, first + QL_SEP.size());
        if (second != kNone) {
            const std::size_t attributeStart = first + QL_SEP.size();
            entries.emplace_back(body.substr(0, first));
            entries.emplace_back(body.substr(attributeStart, second - attributeStart));
            entries.emplace_back(body.substr(second + QL_SEP.size()));
        }
        text.remove_prefix(end + QL_SA_E.size());
    }
    return entries;
}

std::string WrapElementGroup(std::string_view xml) {
    std::string escaped(xml);
    EscapeMarkup(escaped);
    return std::string(QL_ELEM_S).append(escaped).append(QL_ELEM_E);
}

std::vector<std::string_view> SplitElementGroups(std::string_view text) {
    constexpr std::size_t kUsualPieces = 5;
    std::vector<std::string_view> pieces;
    // Splitting ends at the first group that is not balanced. The last QL_ELEM_E of the text need not be
    // compared with the first QL_ELEM_S: if none follows the opening word, the group is not balanced either.
    std::size_t start = 0;
    while ((start = FindWord<QL_ELEM_S>(text)) != kNone) {
        const auto end = ElementGroupEnd(text, start);
        if (!end) {
            break;
        }
        if (pieces.empty()) {
            pieces.reserve(kUsualPieces);
        }
        pieces.push_back(text.substr(0, start));
        pieces.push_back(text.substr(start, *end - start));
        text.remove_prefix(*end);
    }
    pieces.push_back(text);
    return pieces;
}

std::optional<std::string> ElementGroupXml(std::string_view piece) {
    const std::size_t end = FindWord<QL_ELEM_E>(piece);
    if (end == kNone) {
        return std::nullopt;
    }
    std::string xml(piece.substr(QL_ELEM_S.size(), end - QL_ELEM_S.size()));
    UnescapeMarkup(xml);
    return xml;
}

std::vector<std::string_view> SplitTagsValue(std::string_view tagsValue) {
    std::vector<std::string_view> tokens;
    std::size_t end = 0;
    while ((end = FindWord<QL_SEP>(tagsValue)) != kNone) {
        tokens.push_back(tagsValue.substr(0, end));
        tagsValue.remove_prefix(end + QL_SEP.size());
    }
    return tokens;
}

bool HasMarkerPrefix(std::string_view text) {
    return FindWord<kMarkerPrefix>(text) != kNone;
}

std::string RemoveMarkerWords(std::string_view text) {
    std::string result(text);
    if (!HasMarkerPrefix(text)) {
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

// The text gets shorter, so it can be changed in place.
void UnescapeMarkup(std::string& text) {
    const char* const end = text.data() + text.size();
    const char* from = text.data() + std::min(xml::FindByte(text, '&'), text.size());
    char* to = text.data() + (from - text.data());
    while (from != end) {
        const bool mayBeNamed = *from == '&';
        const xml::NamedCharacter named =
            mayBeNamed ? xml::NamedCharacterAt({from, end}) : xml::NamedCharacter{};
        *to++ = named.length == 0 ? *from : named.character;
        from += std::max<std::size_t>(named.length, 1);
    }
    text.resize(static_cast<std::size_t>(to - text.data()));
}

void ReplaceAll(std::string& text, std::string_view oldText, std::string_view newText) {
    if (oldText.empty()) {
        return;
    }
    std::size_t found = xml::Find(text, oldText);
    if (found == std::string::npos) {
        return;
    }
    std::string result;
    result.reserve(text.size());
    std::size_t position = 0;
    while (found != std::string::npos) {
        result.append(text, position, found - position).append(newText);
        position = found + oldText.size();
        found = xml::Find(text, oldText, position);
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
