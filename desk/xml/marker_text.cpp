#include "desk/xml/marker_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>

namespace ventrix::desk {
namespace {

constexpr std::size_t kNpos = std::string_view::npos;

struct GroupWords {
    std::string_view begin, end;
};

constexpr GroupWords kElementGroup{"QL_ELEM_S", "QL_ELEM_E"};
constexpr std::array<GroupWords, 3> kGroups{{{"QL_START", "QL_END"}, {"QL_SA_S", "QL_SA_E"}, kElementGroup}};
constexpr std::string_view kInnerWords[] = {"QL_EQ", "QL_TARGET", "QL_SEP"};

/// How a place writes signs that belong to its text.
struct Escapes {
    std::string_view ampersand, semicolon, less, greater, quote, apostrophe;
};

constexpr Escapes kPlain{"&", ";", "<", ">", "\"", "'"};
constexpr Escapes kXml{"&amp;", ";", "&lt;", "&gt;", "&quot;", "&#39;"};
constexpr Escapes kXmlNumber{"&#38;", ";", "&#60;", "&#62;", "&#34;", "&#39;"};
constexpr Escapes kJson{"\\u0026", ";", "\\u003c", "\\u003e", "\\u0022", "\\u0027"};
constexpr Escapes kUri{"%26", "%3B", "%3C", "%3E", "%22", "%27"};
constexpr Escapes kUriSemicolon{"%26", ";", "%3C", "%3E", "%22", "%27"};

std::string Entity(const Escapes& escapes, std::string_view name) {
    return std::string(escapes.ampersand).append(name).append(escapes.semicolon);
}

bool EqualIgnoringCase(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

bool StartsWith(std::string_view text, std::string_view start) {
    return text.size() >= start.size() &&
           std::equal(start.begin(), start.end(), text.begin(), EqualIgnoringCase);
}

/// The content of an element group begins with the "<" of a start tag, which the marker format escapes. The
/// form that this takes gives the escapes of the place.
const Escapes* EscapesOf(std::string_view content) {
    for (const Escapes* escapes : {&kPlain, &kXml, &kXmlNumber, &kJson, &kUri, &kUriSemicolon}) {
        if (StartsWith(content, Entity(*escapes, "lt"))) {
            return escapes;
        }
    }
    return nullptr;
}

std::string Replaced(std::string_view text, std::string_view from, std::string_view to) {
    std::string changed;
    while (!text.empty()) {
        if (StartsWith(text, from)) {
            changed += to;
            text.remove_prefix(from.size());
        } else {
            changed += text.front();
            text.remove_prefix(1);
        }
    }
    return changed;
}

std::string WithoutTags(std::string_view text, std::string_view open, std::string_view close) {
    std::string kept;
    bool inTag = false;
    while (!text.empty()) {
        if (StartsWith(text, inTag ? close : open)) {
            text.remove_prefix(inTag ? close.size() : open.size());
            inTag = !inTag;
            continue;
        }
        kept += inTag ? "" : std::string(1, text.front());
        text.remove_prefix(1);
    }
    return kept;
}

/// The text of the element in a group, escaped for its place. The group escapes the element's XML once more:
/// a "<" that is part of the text is "&lt;" in the XML and "&amp;lt;" in the group.
std::string TextOfElement(std::string_view content) {
    const Escapes* escapes = EscapesOf(content);
    if (escapes == nullptr) {
        return std::string(content);
    }
    std::string text = WithoutTags(content, Entity(*escapes, "lt"), Entity(*escapes, "gt"));
    text = Replaced(text, Entity(*escapes, "amp"), escapes->ampersand);
    text = Replaced(text, Entity(*escapes, "quot"), escapes->quote);
    text = Replaced(text, Entity(*escapes, "apos"), escapes->apostrophe);
    text = Replaced(text, Entity(*escapes, "lt"), escapes->less);
    text = Replaced(text, Entity(*escapes, "gt"), escapes->greater);
    return Replaced(text, Entity(*escapes, "amp"), escapes->ampersand);
}

/// The next word that begins a group; kNpos if there is none.
std::size_t FindBegin(std::string_view text, std::size_t from, const GroupWords*& words) {
    std::size_t first = kNpos;
    for (const GroupWords& group : kGroups) {
        if (const std::size_t at = text.find(group.begin, from); at < first) {
            first = at;
            words = &group;
        }
    }
    return first;
}

/// The end of the group that begins at `begin`, before its last word; kNpos if it has none or another one of
/// its kind begins first.
std::size_t FindEnd(std::string_view text, std::size_t begin, const GroupWords& words) {
    const std::size_t content = begin + words.begin.size();
    const std::size_t end = text.find(words.end, content);
    if (end == kNpos) {
        return kNpos;
    }
    const std::string_view inside = text.substr(content, end - content);
    return inside.find(words.begin) != kNpos || inside.find('<') != kNpos ? kNpos : end;
}

/// How the text of a document writes the signs of an element in a group. "&" is the last to be
/// read.
struct DoubleEscape {
    std::string_view sign, escape;
};

constexpr DoubleEscape kDoubleEscapes[] = {
    {"<", "&amp;lt;"}, {">", "&amp;gt;"}, {"\"", "&amp;quot;"}, {"'", "&amp;apos;"}, {"&", "&amp;amp;"}};

std::string ElementIn(std::string_view content) {
    std::string element(content);
    for (const auto& [sign, escape] : kDoubleEscapes) {
        element = Replaced(element, escape, sign);
    }
    return element;
}

}  // namespace

bool HoldsMarkerText(std::string_view text) {
    return std::ranges::any_of(kGroups,
                               [text](const GroupWords& group) { return text.find(group.begin) != kNpos; });
}

bool HoldsMarkerWord(std::string_view text) {
    if (text.find("QL_") == kNpos) {
        return false;
    }
    const auto isIn = [text](std::string_view word) { return text.find(word) != kNpos; };
    return HoldsMarkerText(text) || std::ranges::any_of(kInnerWords, isIn) ||
           std::ranges::any_of(kGroups, [&](const GroupWords& group) { return isIn(group.end); });
}

// A "_" is rare in a text, and the third sign of each word.
std::size_t FindOpeningWord(std::string_view text, std::size_t from) {
    for (std::size_t at = text.find('_', from + 2); at != kNpos; at = text.find('_', at + 1)) {
        const std::string_view rest = text.substr(at - 2);
        if (std::ranges::any_of(kGroups,
                                [rest](const GroupWords& group) { return StartsWith(rest, group.begin); })) {
            return at - 2;
        }
    }
    return kNpos;
}

std::string MarkerTextOf(std::string_view element) {
    std::string group(kElementGroup.begin);
    for (const char c : element) {
        const auto* const found =
            std::ranges::find(kDoubleEscapes, std::string_view(&c, 1), &DoubleEscape::sign);
        group += found == std::end(kDoubleEscapes) ? std::string_view(&c, 1) : found->escape;
    }
    return group.append(kElementGroup.end);
}

void ForEachElementGroup(std::string_view document, const std::function<void(const ElementGroup&)>& action) {
    for (std::size_t begin = document.find(kElementGroup.begin); begin != kNpos;) {
        const std::size_t content = begin + kElementGroup.begin.size();
        const std::size_t end = document.find(kElementGroup.end, content);
        if (end == kNpos) {
            return;
        }
        const std::size_t past = end + kElementGroup.end.size();
        action({begin, past, ElementIn(document.substr(content, end - content))});
        begin = document.find(kElementGroup.begin, past);
    }
}

std::size_t RemoveMarkerGroups(std::string& text) {
    std::size_t removed = 0;
    std::string kept;
    std::size_t copied = 0;
    const GroupWords* words = nullptr;
    for (std::size_t begin = FindBegin(text, 0, words); begin != kNpos;) {
        const std::size_t end = FindEnd(text, begin, *words);
        if (end == kNpos) {
            begin = FindBegin(text, begin + words->begin.size(), words);
            continue;
        }
        kept.append(text, copied, begin - copied);
        const std::size_t content = begin + words->begin.size();
        if (words->begin == kElementGroup.begin) {
            kept += TextOfElement(std::string_view(text).substr(content, end - content));
        }
        copied = end + words->end.size();
        ++removed;
        begin = FindBegin(text, copied, words);
    }
    if (removed > 0) {
        text = kept.append(text, copied);
    }
    return removed;
}

}  // namespace ventrix::desk
