#include "markers/marker_text.h"

#include "markers/escaping.h"

namespace ventrix {
namespace {

constexpr std::string_view blanks = " \t\n\r";

}  // namespace

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

void EscapeMarkup(std::string& text) {
    // One pass for all five gives what one after the other would, the ampersand first.
    std::string escaped;
    AppendEscaped(escaped, text, markupEscapes);
    text = std::move(escaped);
}

void UnescapeMarkup(std::string& text) {
    // The ampersand comes last, so that "&amp;lt;" gives "&lt;" and not "<".
    for (auto pair = markupCharacters.rbegin(); pair != markupCharacters.rend(); ++pair) {
        ReplaceAll(text, pair->second, {&pair->first, 1});
    }
}

std::string TrimBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    const std::size_t last = text.find_last_not_of(blanks);
    return std::string(text.substr(first, last - first + 1));
}

}  // namespace ventrix
