// Folders by path in system notation: their entries, creating and removing them, and the attributes of files
// and folders, with the behaviour of NTFS where a caller can see it. Paths and names are UTF-8 and may be as
// long as the operating system allows. Nothing stays open between calls.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/error_codes.h"

namespace ventrix::platform {

/// A file that its owner may not write; never set for a folder.
inline constexpr std::uint32_t kAttributeReadOnly = 0x01;
/// A folder, or a link to one.
inline constexpr std::uint32_t kAttributeDirectory = 0x10;
/// The entry itself is a link (a reparse point).
inline constexpr std::uint32_t kAttributeLink = 0x400;

struct FolderEntry {
    std::string name;          ///< The long name, without the folder.
    std::uint32_t attributes;  ///< The bits above; others are 0.
};

/// The entries of a folder without "." and "..", in the order of NTFS: by upper-cased UTF-16 name,
/// independent of the language; names that differ only in case, by their units. A link that leads nowhere
/// counts as a file. A name that is not UTF-8 is returned as its bytes, so that the file can still be opened.
/// A name with a backslash is left out, since its path would mean another file. A folder that is missing or
/// cannot be read gives no entries. The path may end in separators.
std::vector<FolderEntry> ListFolder(std::string_view folder);

/// The attributes of the file or folder that the path leads to, with kAttributeLink if the path itself is a
/// link. Nothing if it leads to nothing.
std::optional<std::uint32_t> AttributesOf(std::string_view path);

/// Sets or clears the read-only bit of a file; all other bits are ignored, and folders do not change.
ErrorCode SetAttributes(std::string_view path, std::uint32_t attributes);

/// Creates one folder. kErrorAlreadyExists if a file or folder has the name, kErrorPathNotFound if the parent
/// is missing.
ErrorCode MakeFolder(std::string_view path);

/// Removes an empty folder, or a link to a folder without what it leads to. kErrorDirNotEmpty,
/// kErrorNotADirectory.
ErrorCode RemoveEmptyFolder(std::string_view path);

}  // namespace ventrix::platform
