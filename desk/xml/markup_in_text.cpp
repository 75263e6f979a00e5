#include "desk/xml/markup_in_text.h"

#include <algorithm>
#include <cctype>

namespace ventrix::desk {
namespace {

constexpr std::string_view kSpaces = " \t\r\n";

bool IsNameByte(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return std::isalnum(value) != 0 || value >= 0x80 || byte == '-' || byte == '_' || byte == '.';
}

std::string_view NameAtEnd(std::string_view text) {
    text = text.substr(0, text.find_last_not_of(kSpaces) + 1);
    std::size_t start = text.size();
    while (start > 0 && IsNameByte(text[start - 1])) {
        --start;
    }
    return text.substr(start);
}

/// The length of the quote that the text begins with; 0 if there is none. Marker text escapes quotes twice.
std::size_t QuoteLength(std::string_view text) {
    for (const std::string_view quote : {"\"", "'", "&amp;quot;", "&amp;apos;"}) {
        if (text.starts_with(quote)) {
            return quote.size();
        }
    }
    return 0;
}

}  // namespace

std::size_t TagLength(std::string_view text) {
    char quote = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            return at + 1;
        }
    }
    return text.size();
}

std::vector<AttributeInText> AttributesIn(std::string_view text) {
    std::vector<AttributeInText> attributes;
    for (std::size_t at = text.find('='); at != std::string_view::npos; at = text.find('=', at + 1)) {
        const std::string_view name = NameAtEnd(text.substr(0, at));
        std::string_view value = text.substr(at + 1);
        value.remove_prefix(std::min(value.find_first_not_of(kSpaces), value.size()));
        const std::size_t quote = QuoteLength(value);
        if (name.empty() || quote == 0) {
            continue;
        }
        value.remove_prefix(quote);
        attributes.push_back({name, value.substr(0, value.find_first_of("\"'&<"))});
    }
    return attributes;
}

}  // namespace ventrix::desk
