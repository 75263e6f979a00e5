// String operations below the marker format: replacement, escaping against XML, blanks.
// Texts are UTF-8 byte strings; every comparison is by exact bytes, and nothing is normalised.
#pragma once

#include <string>
#include <string_view>

namespace ventrix {

/// Replaces every occurrence, left to right. Inserted text is never searched, nor is a new occurrence that
/// forms where an inserted text meets its neighbours. An empty `oldText` replaces nothing.
void ReplaceAll(std::string& text, std::string_view oldText, std::string_view newText);

/// Escapes the five characters that XML reserves: & < > " and the apostrophe.
void EscapeMarkup(std::string& text);

/// Takes one level of EscapeMarkup away; other references stay as they are.
void UnescapeMarkup(std::string& text);

/// Copy without leading and trailing spaces, tabs, line feeds and carriage returns. Other Unicode spaces
/// count as text.
std::string TrimBlanks(std::string_view text);

}  // namespace ventrix
