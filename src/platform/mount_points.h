// Folders and files at which another file system, or another part of one, is mounted. Paths are native.
#pragma once

#include <filesystem>
#include <vector>

namespace ventrix::platform {

/// Whether something is mounted at the folder itself; links are followed. Bind mounts count, also those of
/// the same device. False if the folder does not exist.
bool IsMountPoint(const std::filesystem::path& folder);

/// The mount points below the folder, files included, in no particular order; the folder itself is left out.
/// Empty if the folder does not exist.
std::vector<std::filesystem::path> MountPointsBelow(const std::filesystem::path& folder);

}  // namespace ventrix::platform
