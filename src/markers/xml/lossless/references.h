// Reads what markup stands for: line ends, character references, entities. Texts are UTF-8.
#pragma once

#include <libxml/tree.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace ventrix::xml {

/// How much one expansion may yield, in bytes, before it counts as an attack.
constexpr std::size_t ExpansionLimit = 10'000'000;

/// The content of a text node: line ends as line feeds, character references and the five predefined entities
/// decoded.
std::string DecodeText(std::string_view raw);

/// CDATA sections and the like: line ends as line feeds, nothing else.
std::string NormalizeLineEnds(std::string_view raw);

/// An attribute's value: references expanded, white space as spaces. Declared entities come from `dtd`, which
/// may be null. Cut at ExpansionLimit.
std::string DecodeAttributeValue(std::string_view raw, xmlDoc* dtd);

/// Runs of spaces as one, none at either end: what an attribute type other than CDATA asks for.
std::string CollapseSpaces(std::string_view value);

/// Appends a text to XML as content; `<`, `>`, `&` and carriage returns escaped. What XML cannot hold becomes
/// U+FFFD.
void AppendEscapedText(std::string& xml, std::string_view text);

/// The same for a value between double quotes.
void AppendEscapedValue(std::string& xml, std::string_view value);

/// The replacement text of a declared entity, nested ones expanded, as XML; empty for an unknown or external
/// one.
std::string ExpandEntity(std::string_view name, xmlDoc* dtd);

}  // namespace ventrix::xml
