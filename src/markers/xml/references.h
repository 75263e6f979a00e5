// Reads what markup stands for: line ends, character references, entities. Texts are UTF-8.
#pragma once

#include <libxml/tree.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace ventrix::xml {

/// How many bytes of replacement text a document may use, and how deep entities may be nested, before that
/// counts as an attack. Parsing refuses a document beyond.
constexpr std::size_t kExpansionLimit = 64'000'000;
constexpr int kDeepestEntity = 40;

/// What a reference stands for: an entity that is not predefined, or malformed; white space; another
/// character.
enum class Reference { kOther, kBlank, kSolid };

struct ReferenceRead {
    Reference kind;
    std::size_t length;  ///< From the "&" to behind the ";"; 1 if there is no end to it.
};

/// Reads the reference at the front of the text.
ReferenceRead ReadReference(std::string_view text);

/// How a written text ends its lines.
enum class LineEnd { kLineFeed, kReturnAndLineFeed };

/// Appends the content of a text node: line ends as line feeds, character references and the five predefined
/// entities decoded.
void AppendDecodedText(std::string& out, std::string_view raw);

/// CDATA sections and the like: line ends as line feeds, nothing else.
std::string NormalizeLineEnds(std::string_view raw);

/// An attribute's value: references expanded, white space as spaces. Declared entities come from `dtd`, which
/// may be null. Cut at ExpansionLimit.
std::string DecodeAttributeValue(std::string_view raw, xmlDoc* dtd);

/// Runs of spaces as one, none at either end: what an attribute type other than CDATA asks for.
std::string CollapseSpaces(std::string_view value);

/// Appends a text to XML as content; `<`, `>`, `&` and carriage returns escaped. What XML cannot hold becomes
/// U+FFFD.
void AppendEscapedText(std::string& xml, std::string_view text, LineEnd lineEnd);

/// The same for markup that stands in the text escaped. It holds nothing but characters of XML.
void AppendQuotedText(std::string& xml, std::string_view markup, LineEnd lineEnd);

/// The same for a value between quotes of this kind; all white space but the space is escaped.
void AppendEscapedValue(std::string& xml, std::string_view value, char quote);

/// The replacement text of a declared entity, nested ones expanded, as XML; empty for an unknown or external
/// one.
std::string ExpandEntity(std::string_view name, xmlDoc* dtd);

}  // namespace ventrix::xml
