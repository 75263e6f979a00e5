// Marker text: the plain words, with data between them, that carry attributes and inline elements through a
// transformation which keeps nothing but text. Writer and reader of the format both stand here; docs/
// marker-format.md tells it in prose. Texts are UTF-8, all searches are by exact bytes, and malformed marker
// text is never an error: it is read as far as it goes. Every operation takes time linear in its text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ventrix {

inline constexpr std::string_view QL_START = "QL_START";    ///< Opens an attribute group.
inline constexpr std::string_view QL_END = "QL_END";        ///< Closes an attribute group.
inline constexpr std::string_view QL_EQ = "QL_EQ";          ///< Between an entry's name and value.
inline constexpr std::string_view QL_TARGET = "QL_TARGET";  ///< Between an entry's value and target.
inline constexpr std::string_view QL_SEP = "QL_SEP";        ///< Ends an entry, a token; parts scoped fields.
inline constexpr std::string_view QL_SA_S = "QL_SA_S";      ///< Opens a scoped attribute group.
inline constexpr std::string_view QL_SA_E = "QL_SA_E";      ///< Closes a scoped attribute group.
inline constexpr std::string_view QL_ELEM_S = "QL_ELEM_S";  ///< Opens an element group.
inline constexpr std::string_view QL_ELEM_E = "QL_ELEM_E";  ///< Closes an element group.

using AttributeEntries = std::vector<std::string>;  ///< Flat: name, value, target, name, value, target, ...
using ScopedEntries = std::vector<std::string>;     ///< Flat: element, attribute, value, ...
using AttributePairs = std::vector<std::string>;    ///< Flat: name (or target), value, ...

/// Puts the entries into an attribute group at the text's front. The entries of a group that stands there
/// already follow behind them, in the same group. No entries: the text stays.
void PrependAttributeGroup(std::string& text, const AttributeEntries& entries);

/// Appends one entry as it stands inside an attribute group.
void AppendEntry(std::string& composed, std::string_view name, std::string_view value,
                 std::string_view target);

/// PrependAttributeGroup for entries that AppendEntry composed. None: the text stays.
void PrependComposedEntries(std::string& text, std::string_view composed);

/// Cuts an attribute group off the text's front and returns the bytes between its two words. Empty, and the
/// text stays, if it does not begin with a closed group.
std::string TakeAttributeGroup(std::string& text);

/// Reads the text's first attribute group, wherever it stands. Entries with a target are appended to the
/// target pairs, the others to the tag pairs. The first entry with a word missing or out of order ends it.
void ParseAttributeGroup(std::string_view text, AttributePairs& tagPairs, AttributePairs& targetPairs);

/// Copy of the text with every attribute group taken out. A QL_START with no QL_END behind it stays.
std::string StripAttributeGroups(std::string_view text);

/// One scoped group per entry, in order. No entries: the empty text.
std::string ComposeScopedGroups(const ScopedEntries& entries);

/// Cuts the scoped groups off the text's front and returns their entries. A group with fewer than three
/// fields is cut off and dropped.
ScopedEntries TakeScopedGroups(std::string& text);

/// The element group that carries an element's XML.
std::string WrapElementGroup(std::string_view xml);

/// Cuts the text into plain pieces and element groups in turn; the pieces, one after the other, give the
/// text. Each balanced group is one piece with a plain piece, possibly empty, on either side. A text without
/// a balanced group is one piece.
std::vector<std::string> SplitElementGroups(std::string_view text);

/// The XML in a piece that begins with QL_ELEM_S; it ends at the first QL_ELEM_E. Nothing without one.
std::optional<std::string> ElementGroupXml(std::string_view piece);

/// The tokens of a tags value, each ended by QL_SEP: names at the even positions from 0, values at the odd
/// ones. What stands behind the last QL_SEP is no token.
std::vector<std::string> SplitTagsValue(std::string_view tagsValue);

/// Copy of the text without any marker word. What stood between the words stays.
std::string RemoveMarkerWords(std::string_view text);

}  // namespace ventrix
