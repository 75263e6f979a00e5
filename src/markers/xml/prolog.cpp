#include "markers/xml/prolog.h"

#include <algorithm>

#include "markers/xml/characters.h"

namespace ventrix::xml {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kNotFound = std::string_view::npos;

/// The position past the "]" of an internal subset that begins at `at`. Literals, comments and processing
/// instructions may contain a "]".
std::size_t InternalSubsetEnd(std::string_view text, std::size_t at) {
    while (at < text.size() && text[at] != ']') {
        if (text.compare(at, 4, "<!--") == 0) {
            at = text.find("-->", at + 4);
        } else if (text.compare(at, 2, "<?") == 0) {
            at = text.find("?>", at + 2);
        } else if (text[at] == '"' || text[at] == '\'') {
            at = text.find(text[at], at + 1);
        }
        if (at == kNotFound) {
            return kNotFound;
        }
        ++at;
    }
    return at < text.size() ? at + 1 : kNotFound;
}

/// The position past the ">" of a DOCTYPE, from a position after its "<!".
std::size_t DoctypeEnd(std::string_view text, std::size_t at) {
    while (at < text.size() && text[at] != '>') {
        if (text[at] == '"' || text[at] == '\'') {
            at = text.find(text[at], at + 1);
        } else if (text[at] == '[') {
            at = InternalSubsetEnd(text, at + 1);
            continue;
        }
        if (at == kNotFound) {
            return kNotFound;
        }
        ++at;
    }
    return at < text.size() ? at + 1 : kNotFound;
}

/// Removes `prefix` from the start of the text; false if the text does not start with it.
bool Consume(std::string_view& text, std::string_view prefix) {
    const bool found = text.starts_with(prefix);
    text.remove_prefix(found ? prefix.size() : 0);
    return found;
}

/// Removes ` name="value"`, given as ` name="`, if the value is a name; else false.
bool ConsumePseudoAttribute(std::string_view& text, std::string_view opening) {
    std::string_view rest = text;
    if (!Consume(rest, opening)) {
        return false;
    }
    const std::size_t end = rest.find('"');
    const bool plain = end != kNotFound && end > 0 && (ClassOf(rest[0]) & kNameStart) != 0 &&
                       std::ranges::all_of(rest.substr(0, end),
                                           [](char c) { return (ClassOf(c) & kNameByte) != 0 && c != ':'; });
    if (plain) {
        text = rest.substr(end + 1);
    }
    return plain;
}

}  // namespace

std::size_t RootBegin(std::string_view text) {
    std::size_t at = text.find('<');
    while (at != kNotFound && at + 1 < text.size() && (text[at + 1] == '?' || text[at + 1] == '!')) {
        std::size_t end = 0;
        if (text[at + 1] == '?') {
            end = FindEnd(text, "?>", at);
        } else if (text.compare(at, 4, "<!--") == 0) {
            end = FindEnd(text, "-->", at + 4);
        } else {
            end = DoctypeEnd(text, at + 2);
        }
        at = end == kNotFound ? kNotFound : text.find('<', end);
    }
    return at;
}

bool IsPlainProlog(std::string_view prolog) {
    Consume(prolog, "\xEF\xBB\xBF"sv);
    if (Consume(prolog, "<?xml version=\"1.0\"")) {
        ConsumePseudoAttribute(prolog, " encoding=\"");
        if (!Consume(prolog, "?>")) {
            return false;
        }
    }
    return std::ranges::all_of(prolog, IsWhitespace);
}

}  // namespace ventrix::xml
