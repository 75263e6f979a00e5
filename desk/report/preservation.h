// What a publish was asked to preserve, as the rows of its report. Strings are UTF-8.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace ventrix::desk {

enum class ItemKind { kAttribute, kScopedAttribute, kElement, kXPath, kQuery, kSourcePath };

/// One thing that is preserved: a row of the report.
struct PreservedItem {
    ItemKind kind = ItemKind::kAttribute;
    std::string name;        ///< The attribute, the element, the query, or "A,B,C,D"; empty for kXPath.
    bool isImplied = false;  ///< Nobody asked for it.
};

/// Source element, source attribute, HTML element and HTML attribute.
using ScopedNames = std::array<std::string, 4>;

struct Preservation {
    std::vector<std::string> attributes, elements, queries;
    std::vector<std::string> sourcePath;  ///< The names of --source-path.
    std::vector<ScopedNames> scoped;
    bool xpath = false;
    std::string tagsAttribute = "data-twtags";
};

/// The item does not exist.
inline constexpr int kNoItem = -1;

/// The items of a preservation, each once, in the order of the members above. The source path of titles,
/// which is always recorded, is the last of the source paths.
class PreservedItems {
  public:
    explicit PreservedItems(const Preservation& preservation);

    const std::vector<PreservedItem>& All() const { return items_; }

    /// The index of an item; kNoItem if it is not preserved.
    int Find(ItemKind kind, std::string_view name) const;

  private:
    void Add(const PreservedItem& item);

    std::vector<PreservedItem> items_;
};

/// The name of a scoped item: "A,B,C,D".
std::string ScopedName(const ScopedNames& names);

}  // namespace ventrix::desk
