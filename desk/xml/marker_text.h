// Marker text in a string of any kind: found and taken out. docs/marker-format.md describes it. Strings are
// UTF-8 or another encoding that contains ASCII.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace ventrix::desk {

/// Whether a word that begins marker text is in the string. A tags attribute contains none after decoding.
bool HoldsMarkerText(std::string_view text);

/// Whether one of the nine marker words is in the string.
bool HoldsMarkerWord(std::string_view text);

/// The position of the first word that begins marker text, in any case: a transformation may have changed it.
/// npos if there is none.
std::size_t FindOpeningWord(std::string_view text, std::size_t from = 0);

/// Takes out every whole group, from the word that begins it to the one that ends it, and returns their
/// number. The words around a group stay, and of an element group the text of its element stays. The groups
/// may be escaped as text of XML, JSON or a URI is; a string has one kind of escapes. A group without its end
/// stays as it is, and so does one that would reach across a "<".
std::size_t RemoveMarkerGroups(std::string& text);

/// A preserved element in the text of a document.
struct ElementGroup {
    std::size_t begin = 0, end = 0;  ///< Of the group, with its words.
    std::string element;             ///< As XML.
};

/// The group for an element in the text of a document.
std::string MarkerTextOf(std::string_view element);

void ForEachElementGroup(std::string_view document, const std::function<void(const ElementGroup&)>& action);

}  // namespace ventrix::desk
