// Splits well-formed content, such as the replacement text of an entity, into tags, text and the rest.
// Nothing is decoded or copied: all views point into the content.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace ventrix::xml {

enum class PieceKind : std::uint8_t { kText, kStartTag, kEndTag, kComment, kInstruction, kCdata };

struct MarkupPiece {
    PieceKind kind;
    std::string_view text;  ///< With its delimiters.
};

/// Removes the first piece from the content, which must not be empty. A piece without an end extends to the
/// end of the content.
MarkupPiece TakePiece(std::string_view& content);

/// The names in a tag: that of the element, then those of its attributes.
std::vector<std::string_view> NamesInTag(std::string_view tag);

}  // namespace ventrix::xml
