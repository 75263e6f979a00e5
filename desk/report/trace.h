// The marker groups of a run, on both sides of the transformation: those that the sources carry, and those
// that arrived in its result. Strings are UTF-8.
//
// A group is followed by its content, since marker text has no number of its own. Both sides therefore share
// one table of strings; equal strings have equal indices.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "desk/paths/paths.h"
#include "desk/report/marker_pieces.h"

namespace ventrix::desk {

inline constexpr int kUnknownString = -1;

class StringTable {
  public:
    StringTable() = default;
    StringTable(StringTable&&) = default;
    StringTable& operator=(StringTable&&) = default;
    StringTable(const StringTable&) = delete;
    StringTable& operator=(const StringTable&) = delete;

    int Add(std::string_view text);

    /// kUnknownString if nobody added it.
    int Find(std::string_view text) const;
    const std::string& operator[](int index) const { return *strings_[static_cast<std::size_t>(index)]; }

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    std::unordered_map<std::string, int, Hash, std::equal_to<>> indices_;
    std::vector<const std::string*> strings_;
};

/// A place of the sources.
struct SourcePlace {
    int file = 0;       ///< Index in SourceTrace::files.
    int line = 0;       ///< 0 if unknown.
    std::string xpath;  ///< Of the element; like the XPaths that are preserved.
    std::string text;   ///< What stands there, shortened.
};

/// A place with an item that a group carries.
struct CarriedItem {
    int item = 0;   ///< Index in PreservedItems.
    int entry = 0;  ///< Of an attribute group; else 0.
};

/// A marker group of the sources.
struct Carrier {
    int group = 0;    ///< The group, with its kind.
    int context = 0;  ///< The words after the group; of an element group, those before it.
    SourcePlace place;
    std::vector<CarriedItem> items;
};

/// Why a place has no group that could carry it.
enum class NotCarried {
    kNoText,       ///< The element contains no text node of its own or below.
    kOverridden,   ///< Each text in the element has a nearer value.
    kStandsAlone,  ///< An inline element that is not in running text.
    kInElement,    ///< The text is in a preserved element, which has no room for it.
    kNotEncoded,   ///< The element is in a part of the file that is left as it is.
};

struct UncarriedPlace {
    int item = 0;
    NotCarried reason = NotCarried::kNoText;
    std::string value;  ///< Of an attribute.
    SourcePlace place;
};

struct SourceTrace {
    std::vector<NativePath> files;  ///< The sources, not their copies.
    std::vector<Carrier> carriers;
    std::vector<UncarriedPlace> uncarried;
    std::vector<NativePath> unread;  ///< Sources whose copy is not XML that can be read.
};

/// Why an entry of a group in a page was not applied.
enum class NotApplied {
    kApplied,
    kOtherValue,  ///< The HTML element got another value first.
    kMisplaced,   ///< A scoped group has text before it, or no such element around it.
    kBroken,      ///< The XML of an element is not well-formed.
    kNotDecoded,  ///< The page is not one that is decoded, or could not be read.
};

/// A marker group in the text of a page.
struct Arrival {
    int group = 0;
    int context = kUnknownString;
    int page = 0;         ///< Index in ResultTrace::pages.
    std::string element;  ///< The name of the HTML element around it.
    std::string anchor;   ///< The id of the nearest element around it that has one; may be empty.
    NotApplied problem = NotApplied::kApplied;
    std::vector<int> unapplied;  ///< The entries that were not applied; empty if all were.
};

/// Marker text in a place that is not decoded.
struct MarkerCopy {
    int group = kUnknownString;
    int page = 0;
    std::string where;  ///< Such as "<meta content>", "comment" or "file".
    std::string key;    ///< The group's key.
    std::string anchor;
};

/// A text of a page with a group that decoding cannot restore.
struct BrokenText {
    int page = 0;
    int line = 0;
    std::string shown;  ///< What is left of the group, or lost with it, shortened.
};

struct ResultTrace {
    std::vector<NativePath> pages;  ///< Relative to the output folder.
    std::vector<Arrival> arrivals;
    std::vector<MarkerCopy> copies;
    std::vector<MarkerCopy> changed;  ///< Groups that no source has, such as those in other case.

    // The first of each page that has one.
    std::vector<BrokenText> cuts;     ///< With a part of a group: only its marker words are taken out.
    std::vector<BrokenText> dropped;  ///< With an element that is not well-formed, which is taken out.
};

/// The key of a group in the table of strings. Groups that differ only in whitespace have the same key, since
/// a transformation may normalise it.
std::string GroupKey(PieceKind kind, std::string_view content);

/// The string, shortened to about 100 bytes at a whole character.
std::string Shortened(std::string_view text);

}  // namespace ventrix::desk
