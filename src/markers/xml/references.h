// Converts between source bytes and content: line ends, character references, entities, escapes. All strings
// are UTF-8.
//
// Content never holds a reference: decoding a text node's bytes resolves character references and the
// predefined entities (a reference to any other entity is a node of its own), decoding an attribute value
// resolves declared entities too. Writing goes the other way with escape tables. Unchanged content is not
// decoded and escaped again, but copied from the source.
#pragma once

#include <libxml/tree.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "markers/xml/characters.h"

namespace ventrix::xml {

/// The bytes of replacement text that a document may use and the depth to which entities may be nested. A
/// document beyond either is refused as an attack.
constexpr std::size_t kExpansionLimit = 64'000'000;
constexpr int kDeepestEntity = 40;

enum class ReferenceKind {
    kWhitespace,  ///< A character reference to whitespace.
    kCharacter,   ///< Another character reference, or a predefined entity.
    kOther        ///< An entity that is not predefined, or malformed.
};

struct Reference {
    ReferenceKind kind;
    std::size_t length;  ///< From the "&" to past the ";"; 1 if there is no ";".
};

/// Reads the reference at the start of the text.
Reference ReadReference(std::string_view text);

/// Whether a string has references, as source bytes do, or is content.
enum class TextForm { kSource, kContent };

/// True if a text node of this text is filled: it holds more than whitespace.
inline bool IsFilled(std::string_view text, TextForm form) {
    std::size_t at = 0;
    while (true) {
        while (at < text.size() && IsWhitespace(text[at])) {
            ++at;
        }
        if (at == text.size() || text[at] != '&' || form == TextForm::kContent) {
            return at < text.size();
        }
        const Reference reference = ReadReference(text.substr(at));
        if (reference.kind != ReferenceKind::kWhitespace) {
            return true;
        }
        at += reference.length;
    }
}

/// How lines end in the text that is written.
enum class LineEnd { kLineFeed, kReturnAndLineFeed };

/// Appends the content of a text node: line ends as line feeds, character references and the five predefined
/// entities decoded.
void AppendDecodedText(std::string& out, std::string_view raw);

/// The text with line ends as line feeds and nothing else changed, as in a CDATA section.
std::string NormalizeLineEnds(std::string_view raw);

/// An attribute value: references expanded, whitespace as spaces. Declared entities come from `dtd`, which
/// may be null. Cut off at kExpansionLimit.
std::string DecodeAttributeValue(std::string_view raw, xmlDoc* dtd);

/// The value with runs of spaces as one and none at either end, as attribute types other than CDATA require.
std::string CollapseSpaces(std::string_view value);

/// Appends the text as content, with `<`, `>`, `&` and carriage returns escaped. What XML does not allow
/// becomes U+FFFD.
void AppendEscapedText(std::string& xml, std::string_view text, LineEnd lineEnd);

/// Appends source markup as text: its reserved characters are escaped, and the result as AppendEscapedText
/// does. The markup must consist of characters that XML allows.
void AppendQuotedText(std::string& xml, std::string_view markup, LineEnd lineEnd);

/// Appends the text as an attribute value between quotes of this kind; all whitespace but the space is
/// escaped.
void AppendEscapedValue(std::string& xml, std::string_view value, char quote);

/// The replacement text of a declared entity as XML, nested entities expanded; empty for an unknown or
/// external entity.
std::string ExpandEntity(std::string_view name, xmlDoc* dtd);

}  // namespace ventrix::xml
