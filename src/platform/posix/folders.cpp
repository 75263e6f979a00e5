#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <wctype.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <memory>

#include "platform/drives.h"
#include "platform/files.h"
#include "platform/posix/file_attributes.h"
#include "platform/wide_text.h"

namespace ventrix::platform {
namespace {

/// The letter's capital as NTFS pairs letters: one to one, so a letter whose capital belongs to another
/// stays.
char16_t Capital(char16_t unit) {
    static const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (unit < 0x80 || unicode == nullptr) {
        return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
    }
    const wint_t upper = ::towupper_l(unit, unicode);
    const bool paired = upper <= 0xFFFF && ::towlower_l(upper, unicode) == unit;
    return paired ? static_cast<char16_t>(upper) : unit;
}

/// What an entry is sorted by.
struct SortKey {
    std::u16string capitals;
    std::u16string units;
};

SortKey KeyOf(const std::string& name) {
    SortKey key;
    key.units = WideFromUtf8(name);
    key.capitals = key.units;
    std::transform(key.units.begin(), key.units.end(), key.capitals.begin(), Capital);
    return key;
}

struct KeyedEntry {
    FolderEntry entry;
    SortKey key;
};

bool Precedes(const KeyedEntry& a, const KeyedEntry& b) {
    if (a.key.capitals != b.key.capitals) {
        return a.key.capitals < b.key.capitals;
    }
    return a.key.units != b.key.units ? a.key.units < b.key.units : a.entry.name < b.entry.name;
}

bool IsListed(const std::string& name) {
    return name != "." && name != ".." && name.find('\\') == std::string::npos;
}

}  // namespace

std::vector<FolderEntry> ListFolder(std::string_view folder) {
    const std::string native = ToNative(folder);
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(native.c_str()), &::closedir);
    if (listing == nullptr) {
        return {};
    }
    std::vector<KeyedEntry> found;
    while (const dirent* item = ::readdir(listing.get())) {
        const std::string name = item->d_name;
        if (IsListed(name)) {
            found.push_back({{name, EntryAttributes(::dirfd(listing.get()), name)}, KeyOf(name)});
        }
    }
    std::sort(found.begin(), found.end(), Precedes);
    std::vector<FolderEntry> entries;
    entries.reserve(found.size());
    for (KeyedEntry& item : found) {
        entries.push_back(std::move(item.entry));
    }
    return entries;
}

}  // namespace ventrix::platform
