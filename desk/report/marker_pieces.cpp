#include "desk/report/marker_pieces.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>

#include "desk/xml/marker_text.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

struct GroupWords {
    PieceKind kind;
    std::string_view begin, end;
};

constexpr std::array<GroupWords, 3> kGroups{{{PieceKind::kAttributes, "QL_START", "QL_END"},
                                             {PieceKind::kScoped, "QL_SA_S", "QL_SA_E"},
                                             {PieceKind::kElement, "QL_ELEM_S", "QL_ELEM_E"}}};

constexpr std::string_view kEquals = "QL_EQ";
constexpr std::string_view kTarget = "QL_TARGET";
constexpr std::string_view kSeparator = "QL_SEP";

/// The index of the group that begins at the position; past the last one if none does.
std::size_t GroupAt(std::string_view text, std::size_t at) {
    const std::string_view rest = text.substr(at);
    const auto found = std::ranges::find_if(
        kGroups, [rest](const GroupWords& words) { return rest.starts_with(words.begin); });
    return static_cast<std::size_t>(found - kGroups.begin());
}

bool EqualIgnoringCase(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

bool BeginsWith(std::string_view text, std::string_view word) {
    return text.size() >= word.size() &&
           std::equal(word.begin(), word.end(), text.begin(), EqualIgnoringCase);
}

std::size_t FindInAnyCase(std::string_view text, std::string_view word, std::size_t from) {
    const auto found = std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), word.begin(),
                                   word.end(), EqualIgnoringCase);
    return found == text.end() ? kNone : static_cast<std::size_t>(found - text.begin());
}

std::string_view Cut(std::string_view& rest, std::string_view word) {
    const std::size_t end = rest.find(word);
    const std::string_view field = rest.substr(0, end);
    rest.remove_prefix(end == kNone ? rest.size() : end + word.size());
    return field;
}

bool HasInOrder(std::string_view text, std::initializer_list<std::string_view> words) {
    std::size_t at = 0;
    for (const std::string_view word : words) {
        at = text.find(word, at);
        if (at == kNone) {
            return false;
        }
        at += word.size();
    }
    return true;
}

struct Escape {
    std::string_view name;
    char character;
};

constexpr std::array<Escape, 5> kEscapes{
    {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}}};

}  // namespace

std::vector<MarkerPiece> SplitAtGroups(std::string_view text) {
    std::vector<MarkerPiece> pieces;
    std::size_t plain = 0;
    const auto addPlain = [&](std::size_t end) {
        if (end > plain) {
            pieces.push_back({PieceKind::kPlain, text.substr(plain, end - plain)});
        }
    };
    std::array<bool, kGroups.size()> hasNoEnd{};  // From here on, so that no search is repeated.
    for (std::size_t at = text.find("QL_"); at != kNone; at = text.find("QL_", at)) {
        const std::size_t group = GroupAt(text, at);
        if (group == kGroups.size() || hasNoEnd[group]) {
            ++at;
            continue;
        }
        const std::size_t content = at + kGroups[group].begin.size();
        const std::size_t end = text.find(kGroups[group].end, content);
        hasNoEnd[group] = end == kNone;
        if (hasNoEnd[group]) {
            continue;
        }
        addPlain(at);
        pieces.push_back({kGroups[group].kind, text.substr(content, end - content)});
        plain = at = end + kGroups[group].end.size();
    }
    addPlain(text.size());
    return pieces;
}

std::vector<MarkerPiece> ChangedGroups(std::string_view plain) {
    std::vector<MarkerPiece> groups;
    for (std::size_t at = 0; (at = FindOpeningWord(plain, at)) != kNone;) {
        const auto words = std::ranges::find_if(kGroups, [rest = plain.substr(at)](const GroupWords& group) {
            return BeginsWith(rest, group.begin);
        });
        const std::size_t content = at + words->begin.size();
        const std::size_t end = std::min(FindInAnyCase(plain, words->end, content), plain.size());
        groups.push_back({words->kind, plain.substr(content, end - content)});
        at = end;
    }
    return groups;
}

std::string LeftOfCutGroups(std::string_view plain) {
    std::size_t pastEnd = 0;  // Of the last group whose beginning is missing.
    std::vector<std::string_view> words{kEquals, kTarget, kSeparator};
    for (const GroupWords& group : kGroups) {
        const std::size_t end = plain.rfind(group.end);
        pastEnd = end == kNone ? pastEnd : std::max(pastEnd, end + group.end.size());
        words.insert(words.end(), {group.begin, group.end});
    }
    std::size_t begin = plain.size();  // Of the first group whose end is missing.
    for (const GroupWords& group : kGroups) {
        begin = std::min(begin, plain.find(group.begin, pastEnd));
    }
    const bool isMiddle = pastEnd == 0 && begin == plain.size();
    std::string left(isMiddle ? plain : plain.substr(0, pastEnd));
    left += plain.substr(begin);
    const std::size_t size = left.size();
    for (const std::string_view word : words) {
        for (std::size_t at = 0; (at = left.find(word, at)) != kNone;) {
            left.erase(at, word.size());
        }
    }
    return left.size() < size && IsFilled(left) ? left : std::string();
}

std::string_view WordsAround(const std::vector<MarkerPiece>& pieces, std::size_t index) {
    const auto isPlain = [&pieces](std::size_t at) {
        return at < pieces.size() && pieces[at].kind == PieceKind::kPlain;
    };
    if (pieces[index].kind == PieceKind::kElement) {
        return index > 0 && isPlain(index - 1) ? pieces[index - 1].content : std::string_view();
    }
    do {
        ++index;
    } while (index < pieces.size() && pieces[index].kind == PieceKind::kScoped);
    return isPlain(index) ? pieces[index].content : std::string_view();
}

std::vector<MarkerEntry> EntriesOf(std::string_view attributeGroup) {
    std::vector<MarkerEntry> entries;
    while (HasInOrder(attributeGroup, {kEquals, kTarget, kSeparator})) {
        const std::string_view name = Cut(attributeGroup, kEquals);
        const std::string_view value = Cut(attributeGroup, kTarget);
        entries.push_back({name, value, Cut(attributeGroup, kSeparator)});
    }
    return entries;
}

ScopedFields FieldsOf(std::string_view scopedGroup) {
    if (!HasInOrder(scopedGroup, {kSeparator, kSeparator})) {
        return {};
    }
    const std::string_view element = Cut(scopedGroup, kSeparator);
    const std::string_view attribute = Cut(scopedGroup, kSeparator);
    return {element, attribute, scopedGroup};
}

std::string ElementXml(std::string_view elementGroup) {
    std::string xml;
    while (!elementGroup.empty()) {
        const auto escape = std::ranges::find_if(
            kEscapes, [&](const Escape& known) { return elementGroup.starts_with(known.name); });
        const bool isEscaped = escape != kEscapes.end();
        xml += isEscaped ? escape->character : elementGroup.front();
        elementGroup.remove_prefix(isEscaped ? escape->name.size() : 1);
    }
    return xml;
}

bool IsFilled(std::string_view text) {
    return !std::ranges::all_of(text, IsXmlWhitespace);
}

}  // namespace ventrix::desk
