// The order in which NTFS lists the entries of a folder.
#pragma once

#include <vector>

#include "platform/folders.h"

namespace ventrix::platform {

/// The upper-case form of a UTF-16 unit that NTFS sorts by.
using CapitalOf = char16_t (*)(char16_t unit);

/// Sorts by upper-cased UTF-16 name; names that differ only in case, by their units.
void SortAsListed(std::vector<FolderEntry>& entries, CapitalOf capitalOf);

}  // namespace ventrix::platform
