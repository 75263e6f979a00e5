#include "markers/marker_text.h"

#include <algorithm>
#include <array>

namespace ventrix {
namespace {

constexpr std::string_view blanks = " \t\n\r";

struct EscapePair {
    char character;
    std::string_view escape;
};

// The ampersand stands first: it is unescaped last, so that "&amp;lt;" gives "&lt;" and not "<".
constexpr std::array<EscapePair, 5> escapeTable = {{
    {'&', "&amp;"},
    {'<', "&lt;"},
    {'>', "&gt;"},
    {'"', "&quot;"},
    {'\'', "&apos;"},
}};

/// The escape of each byte; empty for a byte that stays.
constexpr std::array<std::string_view, 256> MakeEscapes() {
    std::array<std::string_view, 256> escapes;
    for (const auto& [character, escape] : escapeTable) {
        escapes[static_cast<unsigned char>(character)] = escape;
    }
    return escapes;
}

constexpr std::array<std::string_view, 256> escapes = MakeEscapes();

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
    std::string escaped;
    escaped.reserve(2 * text.size());
    AppendEscapedMarkup(escaped, text);
    text = std::move(escaped);
}

void AppendEscapedMarkup(std::string& escaped, std::string_view text) {
    // One pass for all five gives what one after the other would, the ampersand first.
    std::size_t done = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string_view escape = escapes[static_cast<unsigned char>(text[at])];
        if (!escape.empty()) {
            escaped.append(text.substr(done, at - done)).append(escape);
            done = at + 1;
        }
    }
    escaped.append(text.substr(done));
}

void UnescapeMarkup(std::string& text) {
    for (auto pair = escapeTable.rbegin(); pair != escapeTable.rend(); ++pair) {
        ReplaceAll(text, pair->escape, {&pair->character, 1});
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
