// Compares files and folders by their identity in the file system, not by their names: links, bind mounts and
// file systems that ignore case give a file several names. Paths are native.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace ventrix::platform {

struct FileIdentity {
    std::uint64_t device = 0;  ///< May change when the machine restarts.
    std::uint64_t file = 0;    ///< Unique on the device while the file exists.

    bool operator==(const FileIdentity&) const = default;
};

/// The identity of what the path leads to; links are followed. Nothing if it does not exist or cannot be
/// reached.
std::optional<FileIdentity> IdentityOf(const std::filesystem::path& path);

/// Whether `path` is `folder` or lies below it: by the folders of the path as it is written, or, where links
/// lead elsewhere, by the folders of the file that it leads to. False if either does not exist.
bool LiesIn(const std::filesystem::path& path, const std::filesystem::path& folder);

}  // namespace ventrix::platform
