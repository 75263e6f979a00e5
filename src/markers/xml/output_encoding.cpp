#include "markers/xml/output_encoding.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "markers/xml/characters.h"
#include "markers/xml/markup_pieces.h"
#include "markers/xml/prolog.h"
#include "markers/xml/references.h"
#include "markers/xml/source_encoding.h"

namespace ventrix::xml {
namespace {

constexpr std::size_t kNotFound = std::string_view::npos;

bool IsAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void AppendBeyondAscii(std::string& out, std::string_view markup) {
    if (!IsAscii(markup)) {
        out += markup;
    }
}

void AppendCdataAsText(std::string& out, std::string_view section) {
    constexpr std::size_t kOpening = sizeof "<![CDATA[" - 1;
    constexpr std::size_t kClosing = sizeof "]]>" - 1;
    const std::string_view content = section.substr(kOpening, section.size() - kOpening - kClosing);
    const bool hasReturns = content.find('\r') != kNotFound;
    AppendEscapedText(out, NormalizeLineEnds(content),
                      hasReturns ? LineEnd::kReturnAndLineFeed : LineEnd::kLineFeed);
}

/// The document with those CDATA sections as text that the encoding lacks characters of; nothing if that is
/// not enough.
std::optional<std::string> FitToEncoding(std::string_view text, const std::string& encoding) {
    std::string markup;  // All that cannot hold a reference.
    std::string fitted(text.substr(0, RootBegin(text)));
    for (std::string_view rest = text.substr(fitted.size()); !rest.empty();) {
        const MarkupPiece piece = TakePiece(rest);
        if (piece.kind == PieceKind::kCdata && !CanEncode(piece.text, encoding)) {
            AppendCdataAsText(fitted, piece.text);
            continue;
        }
        fitted += piece.text;
        if (piece.kind == PieceKind::kComment || piece.kind == PieceKind::kInstruction) {
            AppendBeyondAscii(markup, piece.text);
        } else if (piece.kind == PieceKind::kStartTag && !IsAscii(piece.text)) {
            for (const std::string_view name : NamesInTag(piece.text)) {
                AppendBeyondAscii(markup, name);
            }
        }
    }
    return CanEncode(markup, encoding) ? std::optional(std::move(fitted)) : std::nullopt;
}

char LowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// The position past the first `word`, given in lower case, in a text of any case; npos without one.
std::size_t FindWordEnd(std::string_view text, std::string_view word) {
    const auto* const found = std::search(text.begin(), text.end(), word.begin(), word.end(),
                                          [](char c, char lower) { return LowerCase(c) == lower; });
    return found == text.end() ? kNotFound : static_cast<std::size_t>(found - text.begin()) + word.size();
}

/// The markup with UTF-8 as the encoding that follows `key` and an equals sign; unchanged without one.
std::string WithUtf8After(std::string_view markup, std::string_view key) {
    const auto isBeforeName = [](char c) { return IsWhitespace(c) || c == '=' || c == '"' || c == '\''; };
    const auto endsName = [](char c) {
        return IsWhitespace(c) || std::string_view("\"';>/?").find(c) != kNotFound;
    };
    const std::size_t keyEnd = FindWordEnd(markup, key);
    if (keyEnd == kNotFound) {
        return std::string(markup);
    }
    const auto begin = std::ranges::find_if_not(markup.substr(keyEnd), isBeforeName);
    const auto end = std::find_if(begin, markup.end(), endsName);
    return std::string(markup.begin(), begin).append("UTF-8").append(end, markup.end());
}

bool IsMeta(std::string_view startTag) {
    const std::vector<std::string_view> names = NamesInTag(startTag);
    return !names.empty() && std::ranges::equal(names[0], std::string_view("meta"), {}, LowerCase);
}

/// The document with an XML declaration and `meta` elements that name UTF-8.
std::string DeclaredAsUtf8(std::string_view text) {
    const std::string_view declaration = text.substr(0, FindEnd(text, "?>", 0));
    std::string declared = WithUtf8After(declaration, "encoding");
    const std::size_t root = RootBegin(text);
    declared += text.substr(declaration.size(), root - declaration.size());
    for (std::string_view rest = text.substr(root); !rest.empty();) {
        const MarkupPiece piece = TakePiece(rest);
        if (piece.kind == PieceKind::kStartTag && IsMeta(piece.text)) {
            declared += WithUtf8After(piece.text, "charset");
        } else {
            declared += piece.text;
        }
    }
    return declared;
}

}  // namespace

bool EncodeDocument(const std::string& text, const std::string& encoding, std::string& bytes) {
    if (encoding.starts_with("UTF-")) {
        return EncodeSource(text, encoding, bytes);
    }
    if (const auto fitted = FitToEncoding(text, encoding)) {
        return EncodeSource(*fitted, encoding, bytes);
    }
    bytes = DeclaredAsUtf8(text);
    return true;
}

}  // namespace ventrix::xml
