// Marker text: plain words, with data between them, that carry attributes and inline elements through a
// transformation which preserves only text. This is the one definition of the format, for writer and reader;
// docs/marker-format.md describes it in prose.
//
// Strings are UTF-8; searches and comparisons are by exact bytes. Malformed marker text is never an error: it
// is read as far as possible. Every operation takes time linear in the length of its string.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ventrix {

inline constexpr std::string_view QL_START = "QL_START";    ///< Opens an attribute group.
inline constexpr std::string_view QL_END = "QL_END";        ///< Closes an attribute group.
inline constexpr std::string_view QL_EQ = "QL_EQ";          ///< Separates an entry's name and value.
inline constexpr std::string_view QL_TARGET = "QL_TARGET";  ///< Separates an entry's value and target.
inline constexpr std::string_view QL_SEP = "QL_SEP";    ///< Ends an entry or token; separates scoped fields.
inline constexpr std::string_view QL_SA_S = "QL_SA_S";  ///< Opens a scoped attribute group.
inline constexpr std::string_view QL_SA_E = "QL_SA_E";  ///< Closes a scoped attribute group.
inline constexpr std::string_view QL_ELEM_S = "QL_ELEM_S";  ///< Opens an element group.
inline constexpr std::string_view QL_ELEM_E = "QL_ELEM_E";  ///< Closes an element group.

using AttributeEntries = std::vector<std::string>;  ///< Flat: name, value, target, name, value, target, ...
using ScopedEntries = std::vector<std::string>;     ///< Flat: element, attribute, value, ...
using AttributePairs = std::vector<std::string_view>;  ///< Flat: name (or target), value, ...

/// Puts the entries into an attribute group at the front of the text. If the text begins with an attribute
/// group, its entries follow the new ones in the same group. Without entries the text stays unchanged.
void PrependAttributeGroup(std::string& text, const AttributeEntries& entries);

/// PrependAttributeGroup for a group that is already composed, both its words included.
void PrependComposedGroup(std::string& text, std::string_view group);

/// Appends one entry to an attribute group that is being composed.
void AppendEntry(std::string& group, std::string_view name, std::string_view value, std::string_view target);

/// Cuts an attribute group off the front of the text and returns the bytes between its two words. If the text
/// does not begin with a closed group, it stays unchanged and the result is empty.
std::string TakeAttributeGroup(std::string& text);

/// Reads the first attribute group, wherever it is in the text. Entries with a target are appended to
/// `targetPairs`, the others to `tagPairs`, as views of the text. Reading ends at the first entry that lacks
/// a word or has its words out of order.
void ParseAttributeGroup(std::string_view text, AttributePairs& tagPairs, AttributePairs& targetPairs);

/// Returns the text without its attribute groups. A QL_START without a QL_END after it stays. The view points
/// into the text where the result is a part of it, otherwise into `buffer`, which is overwritten.
std::string_view StripAttributeGroups(std::string_view text, std::string& buffer);

/// The parts of a text in their order, in the form that an encoding pass gives to it.
struct EncodedText {
    /// A plain text or the escaped XML of an element group, never empty and without a marker word. No two
    /// plain parts follow each other.
    struct Part {
        std::string_view text;
        bool isElement;
    };
    std::vector<Part> parts;
    std::string_view attributeGroup;  ///< The first one, without its outer words; null without one.
    AttributePairs tagPairs;          ///< Of that group, as ParseAttributeGroup reads it.
    AttributePairs targetPairs;
};

/// Splits a text that consists of nothing but complete attribute groups, element groups that hold no further
/// group, and plain text. All views are of the text. False for any other text, in particular for one with
/// scoped groups, with a "Q" that begins no marker word, or with plain text on both sides of an attribute
/// group; `encoded` is then without meaning. A text without marker words is one plain part.
bool SplitEncodedText(std::string_view text, EncodedText& encoded);

/// Returns one scoped group per entry, in order; empty without entries.
std::string ComposeScopedGroups(const ScopedEntries& entries);

/// Cuts the scoped groups off the front of the text and returns their entries. A group with fewer than three
/// fields is cut off too, but gives no entry.
ScopedEntries TakeScopedGroups(std::string_view& text);

/// Returns the element group that carries the XML of an element.
std::string WrapElementGroup(std::string_view xml);

/// Splits the text at its balanced element groups. Plain pieces, possibly empty, and groups alternate,
/// beginning and ending with a plain piece; concatenated, they give the text. A text without a balanced group
/// is one piece. The pieces are views of the text.
std::vector<std::string_view> SplitElementGroups(std::string_view text);

/// Returns the XML of a piece that begins with QL_ELEM_S. It ends at the first QL_ELEM_E; nothing without
/// one.
std::optional<std::string> ElementGroupXml(std::string_view piece);

/// Returns the tokens of a tags value: names at the even positions, counted from 0, values at the odd ones.
/// Bytes after the last QL_SEP are not a token. The tokens are views of the value.
std::vector<std::string_view> SplitTagsValue(std::string_view tagsValue);

/// True if the text may hold a marker word: it has the bytes that every marker word begins with.
bool HasMarkerPrefix(std::string_view text);

/// Returns the text without marker words. The bytes between the words stay.
std::string RemoveMarkerWords(std::string_view text);

/// Escapes the five characters that XML reserves: & < > " and the apostrophe.
void EscapeMarkup(std::string& text);

/// Undoes EscapeMarkup by one level: "&amp;lt;" gives "&lt;". Other references stay as they are.
void UnescapeMarkup(std::string& text);

/// Replaces every occurrence, left to right. The search goes on after the inserted string, so occurrences
/// that an insertion creates are not replaced. An empty `oldText` replaces nothing.
void ReplaceAll(std::string& text, std::string_view oldText, std::string_view newText);

/// Returns the text without leading and trailing spaces, tabs, line feeds and carriage returns. A text of
/// which something remains is called filled. Other Unicode spaces are not whitespace here.
std::string TrimBlanks(std::string_view text);

}  // namespace ventrix
