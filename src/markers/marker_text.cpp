#include "markers/marker_text.h"

#include <algorithm>

#include "markers/xml/escaping.h"

namespace ventrix {
namespace {

constexpr std::string_view kBlanks = " \t\n\r";

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

std::string TrimBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    const std::size_t last = text.find_last_not_of(kBlanks);
    return std::string(text.substr(first, last - first + 1));
}

}  // namespace ventrix
