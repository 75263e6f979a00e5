// A string with marker text, split into its groups and the words between them. docs/marker-format.md
// describes the groups. Views point into the string.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ventrix::desk {

enum class PieceKind { kPlain, kAttributes, kScoped, kElement };

struct MarkerPiece {
    PieceKind kind = PieceKind::kPlain;
    std::string_view content;  ///< Of a group, what is between its first and its last word.
};

/// An entry of an attribute group.
struct MarkerEntry {
    std::string_view name, value, target;
};

/// The three fields of a scoped group.
struct ScopedFields {
    std::string_view element, attribute, value;
};

/// The pieces of a string, in order; a plain piece is never empty. A group without its end is plain.
std::vector<MarkerPiece> SplitAtGroups(std::string_view text);

/// The groups in a plain piece: those whose words are in another case, and one that lost its end, which is
/// the rest of the piece.
std::vector<MarkerPiece> ChangedGroups(std::string_view plain);

/// What decoding leaves of groups in a plain piece of which only a part is there, once it has taken out the
/// marker words; empty if nothing. A text cut in its marker text has such a part at its begin or its end.
std::string LeftOfCutGroups(std::string_view plain);

/// The words that tell the group at the index from equal ones: those after it, up to the next group with
/// words of its own; for an element group, those before it. Empty if there are none.
std::string_view WordsAround(const std::vector<MarkerPiece>& pieces, std::size_t index);

/// The entries of an attribute group, up to the first that lacks a word.
std::vector<MarkerEntry> EntriesOf(std::string_view attributeGroup);

/// Empty fields if there are fewer than three.
ScopedFields FieldsOf(std::string_view scopedGroup);

/// The XML of an element group's element.
std::string ElementXml(std::string_view elementGroup);

/// Whether the string is more than spaces, tabs and line ends.
bool IsFilled(std::string_view text);

}  // namespace ventrix::desk
