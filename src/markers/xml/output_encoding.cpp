#include "markers/xml/output_encoding.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "markers/xml/characters.h"
#include "markers/xml/markup_pieces.h"
#include "markers/xml/prolog.h"
#include "markers/xml/references.h"
#include "markers/xml/source_encoding.h"

namespace ventrix::xml {
namespace {

constexpr std::size_t kNotFound = std::string_view::npos;

bool IsAscii(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

/// The length of the character beyond ASCII that begins the text; 1 where it is not UTF-8.
std::size_t LengthOf(std::string_view text) {
    return std::max<std::size_t>(CharacterLength(text.substr(0, 4)), 1);
}

std::uint32_t CodeOf(std::string_view character) {
    std::uint32_t code = static_cast<unsigned char>(character[0]) & (0xFFU >> (character.size() + 1));
    for (const char c : character.substr(1)) {
        code = code << 6 | (static_cast<unsigned char>(c) & 0x3FU);
    }
    return code;
}

/// Which characters an encoding has. All have those of ASCII; each other one is tried once. The converters
/// are not left to deal with a character that is missing: some of them drop what follows it.
class Repertoire {
  public:
    explicit Repertoire(const std::string& encoding) : encoding_(encoding) {}

    bool HasAll(std::string_view text) {
        bool all = true;
        ForEachBeyondAscii(text,
                           [&](std::size_t, std::string_view character) { all = all && Has(character); });
        return all;
    }

    /// Appends the text with references to the characters that the encoding lacks.
    void AppendWithReferences(std::string& out, std::string_view text) {
        std::size_t done = 0;
        ForEachBeyondAscii(text, [&](std::size_t at, std::string_view character) {
            if (!Has(character)) {
                out.append(text.substr(done, at - done)).append("&#");
                out.append(std::to_string(CodeOf(character))).append(";");
                done = at + character.size();
            }
        });
        out.append(text.substr(done));
    }

  private:
    template <typename Visit>
    static void ForEachBeyondAscii(std::string_view text, Visit visit) {
        for (std::size_t at = 0; at < text.size(); ++at) {
            if (!IsAscii(text[at])) {
                const std::size_t length = LengthOf(text.substr(at));
                visit(at, text.substr(at, length));
                at += length - 1;
            }
        }
    }

    bool Has(std::string_view character) {
        const auto [entry, isNew] = known_.try_emplace(std::string(character), false);
        if (isNew) {
            entry->second = CanEncode(character, encoding_);
        }
        return entry->second;
    }

    const std::string& encoding_;
    std::unordered_map<std::string, bool> known_;
};

std::string CdataAsText(std::string_view section) {
    constexpr std::size_t kOpening = sizeof "<![CDATA[" - 1;
    constexpr std::size_t kClosing = sizeof "]]>" - 1;
    const std::string_view content = section.substr(kOpening, section.size() - kOpening - kClosing);
    const bool hasReturns = content.find('\r') != kNotFound;
    std::string text;
    AppendEscapedText(text, NormalizeLineEnds(content),
                      hasReturns ? LineEnd::kReturnAndLineFeed : LineEnd::kLineFeed);
    return text;
}

/// True if the encoding has all of the piece that cannot be a reference.
bool Fits(const MarkupPiece& piece, Repertoire& repertoire) {
    switch (piece.kind) {
        case PieceKind::kComment:
        case PieceKind::kInstruction:
            return repertoire.HasAll(piece.text);
        case PieceKind::kStartTag:
            return repertoire.HasAll(piece.text) ||
                   std::ranges::all_of(NamesInTag(piece.text),
                                       [&](std::string_view name) { return repertoire.HasAll(name); });
        default:
            return true;
    }
}

/// The document with references to what the encoding lacks; nothing if that is not enough.
std::optional<std::string> FitToEncoding(std::string_view text, const std::string& encoding) {
    Repertoire repertoire(encoding);
    std::string fitted(text.substr(0, RootBegin(text)));
    for (std::string_view rest = text.substr(fitted.size()); !rest.empty();) {
        const MarkupPiece piece = TakePiece(rest);
        if (!Fits(piece, repertoire)) {
            return std::nullopt;
        }
        const bool becomesText = piece.kind == PieceKind::kCdata && !repertoire.HasAll(piece.text);
        if (becomesText) {
            repertoire.AppendWithReferences(fitted, CdataAsText(piece.text));
        } else {
            repertoire.AppendWithReferences(fitted, piece.text);
        }
    }
    return fitted;
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
