#include "platform/folder_order.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/wide_text.h"

namespace ventrix::platform {
namespace {

struct KeyedEntry {
    FolderEntry entry;
    std::u16string capitals;
    std::u16string units;
};

KeyedEntry WithKey(FolderEntry entry, CapitalOf capitalOf) {
    KeyedEntry keyed;
    keyed.units = WideFromUtf8(entry.name);
    keyed.capitals = keyed.units;
    std::transform(keyed.units.begin(), keyed.units.end(), keyed.capitals.begin(), capitalOf);
    keyed.entry = std::move(entry);
    return keyed;
}

bool Precedes(const KeyedEntry& a, const KeyedEntry& b) {
    if (a.capitals != b.capitals) {
        return a.capitals < b.capitals;
    }
    return a.units != b.units ? a.units < b.units : a.entry.name < b.entry.name;
}

}  // namespace

void SortAsListed(std::vector<FolderEntry>& entries, CapitalOf capitalOf) {
    std::vector<KeyedEntry> keyed;
    keyed.reserve(entries.size());
    for (FolderEntry& entry : entries) {
        keyed.push_back(WithKey(std::move(entry), capitalOf));
    }
    std::sort(keyed.begin(), keyed.end(), Precedes);
    std::transform(keyed.begin(), keyed.end(), entries.begin(),
                   [](KeyedEntry& sorted) { return std::move(sorted.entry); });
}

}  // namespace ventrix::platform
