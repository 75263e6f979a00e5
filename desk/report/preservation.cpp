#include "desk/report/preservation.h"

#include <algorithm>

namespace ventrix::desk {
namespace {

constexpr char kTitle[] = "title";

}  // namespace

PreservedItems::PreservedItems(const Preservation& preservation) {
    const auto addAll = [this](ItemKind kind, const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            Add({kind, name});
        }
    };
    addAll(ItemKind::kAttribute, preservation.attributes);
    for (const ScopedNames& names : preservation.scoped) {
        Add({ItemKind::kScopedAttribute, ScopedName(names)});
    }
    addAll(ItemKind::kElement, preservation.elements);
    if (preservation.xpath) {
        Add({ItemKind::kXPath, {}});
    }
    addAll(ItemKind::kQuery, preservation.queries);
    addAll(ItemKind::kSourcePath, preservation.sourcePath);
    Add({ItemKind::kSourcePath, kTitle, true});
}

int PreservedItems::Find(ItemKind kind, std::string_view name) const {
    const auto found = std::ranges::find_if(
        items_, [&](const PreservedItem& item) { return item.kind == kind && item.name == name; });
    return found == items_.end() ? kNoItem : static_cast<int>(found - items_.begin());
}

void PreservedItems::Add(const PreservedItem& item) {
    if (Find(item.kind, item.name) == kNoItem) {
        items_.push_back(item);
    }
}

std::string ScopedName(const ScopedNames& names) {
    return names[0] + ',' + names[1] + ',' + names[2] + ',' + names[3];
}

}  // namespace ventrix::desk
