// Marker text in a string of any kind: found and taken out. docs/marker-format.md describes it. Strings are
// UTF-8 or another encoding that contains ASCII.
#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

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

void ForEachElementGroup(std::string_view document, const std::function<void(const ElementGroup&)>& action);

/// Ids without the files and topics that contain them.
struct ReferencedIds {
    std::set<std::string, std::less<>> ids;
    std::set<std::pair<std::string, std::string>> ranges;  ///< The first and the last id of each.
};

/// Adds each id that a reference in the document, or in its marker text, names.
void AddReferencedIds(std::string_view document, ReferencedIds& referenced);

/// In a document with marker text, puts back each preserved element that only the transformation can process:
/// one that contains a reference without text of its own, such as <keyword keyref="product"/>, one that
/// contains an element with one of the ids, and one in a range. Returns their number.
std::size_t RestoreReferenceElements(std::string& document, const ReferencedIds& referenced);

}  // namespace ventrix::desk
