// Recognises misspelled words: options, commands and names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ventrix::desk {

/// Returns the known word that the given one was most likely meant to be: one that differs in one letter, or
/// in up to two if the given word has more than five bytes. A letter that is missing, added or replaced
/// counts as one difference, and so do two letters that changed places. Empty if there is none.
std::string MeantWord(std::string_view word, const std::vector<std::string>& known);

}  // namespace ventrix::desk
