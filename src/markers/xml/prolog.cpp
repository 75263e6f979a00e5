#include "markers/xml/prolog.h"

#include <algorithm>

#include "markers/xml/characters.h"

namespace ventrix::xml {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kNotFound = std::string_view::npos;

/// Behind the "]" that closes an internal subset which begins at `at`. Literals, comments and instructions
/// may hold one.
std::size_t BehindInternalSubset(std::string_view text, std::size_t at) {
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

std::size_t BehindDoctype(std::string_view text, std::size_t at) {
    while (at < text.size() && text[at] != '>') {
        if (text[at] == '"' || text[at] == '\'') {
            at = text.find(text[at], at + 1);
        } else if (text[at] == '[') {
            at = BehindInternalSubset(text, at + 1);
            continue;
        }
        if (at == kNotFound) {
            return kNotFound;
        }
        ++at;
    }
    return at < text.size() ? at + 1 : kNotFound;
}

std::size_t Behind(std::string_view text, std::string_view closing, std::size_t at) {
    const std::size_t found = text.find(closing, at);
    return found == kNotFound ? kNotFound : found + closing.size();
}

/// Takes the words off the text's front; false if others stand there.
bool Take(std::string_view& text, std::string_view words) {
    const bool taken = text.starts_with(words);
    text.remove_prefix(taken ? words.size() : 0);
    return taken;
}

/// Takes ` name="value"`, with a value of name characters; false if something else stands there.
bool TakePseudoAttribute(std::string_view& text, std::string_view opening) {
    std::string_view rest = text;
    if (!Take(rest, opening)) {
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
        std::size_t behind = 0;
        if (text[at + 1] == '?') {
            behind = Behind(text, "?>", at);
        } else if (text.compare(at, 4, "<!--") == 0) {
            behind = Behind(text, "-->", at + 4);
        } else {
            behind = BehindDoctype(text, at + 2);
        }
        at = behind == kNotFound ? kNotFound : text.find('<', behind);
    }
    return at;
}

bool IsPlainProlog(std::string_view prolog) {
    Take(prolog, "\xEF\xBB\xBF"sv);
    if (Take(prolog, "<?xml version=\"1.0\"")) {
        TakePseudoAttribute(prolog, " encoding=\"");
        if (!Take(prolog, "?>")) {
            return false;
        }
    }
    return std::ranges::all_of(prolog, IsBlank);
}

}  // namespace ventrix::xml
