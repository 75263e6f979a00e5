#include "markers/xml/markup_pieces.h"

#include <algorithm>

#include "markers/xml/characters.h"

namespace ventrix::xml {
namespace {

struct Delimiters {
    PieceKind kind;
    std::string_view opening, closing;
};

constexpr Delimiters kDelimiters[] = {
    {PieceKind::kComment, "<!--", "-->"},
    {PieceKind::kCdata, "<![CDATA[", "]]>"},
    {PieceKind::kInstruction, "<?", "?>"},
};

/// The position past the ">" of the tag that begins the text. Values may contain a ">".
std::size_t TagEnd(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size() && text[at] != '>') {
        if (text[at] == '"' || text[at] == '\'') {
            at = std::min(text.find(text[at], at + 1), text.size() - 1);
        }
        ++at;
    }
    return std::min(at + 1, text.size());
}

bool IsBetweenNames(char c) {
    return IsWhitespace(c) || c == '=' || c == '<' || c == '>' || c == '/';
}

}  // namespace

MarkupPiece TakePiece(std::string_view& content) {
    const std::string_view from = content;
    const auto take = [&](PieceKind kind, std::size_t end) {
        content.remove_prefix(std::min(end, content.size()));
        return MarkupPiece{kind, from.substr(0, end)};
    };
    if (from[0] != '<') {
        return take(PieceKind::kText, from.find('<'));
    }
    for (const Delimiters& delimiters : kDelimiters) {
        if (from.starts_with(delimiters.opening)) {
            return take(delimiters.kind, FindEnd(from, delimiters.closing, delimiters.opening.size()));
        }
    }
    return take(from.starts_with("</") ? PieceKind::kEndTag : PieceKind::kStartTag, TagEnd(from));
}

std::vector<std::string_view> NamesInTag(std::string_view tag) {
    std::vector<std::string_view> names;
    for (std::size_t at = 0; at < tag.size();) {
        if (tag[at] == '"' || tag[at] == '\'') {
            at = std::min(tag.find(tag[at], at + 1), tag.size() - 1) + 1;
        } else if (IsBetweenNames(tag[at])) {
            ++at;
        } else {
            const auto end = std::ranges::find_if(tag.substr(at), IsBetweenNames) - tag.begin();
            names.push_back(tag.substr(at, static_cast<std::size_t>(end) - at));
            at = static_cast<std::size_t>(end);
        }
    }
    return names;
}

}  // namespace ventrix::xml
