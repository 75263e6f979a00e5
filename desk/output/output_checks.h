// Which folders may take a result. Nothing here changes anything. Paths are native and absolute. A refusal is
// the rest of a sentence that begins with the folder's name; it is empty if the folder may be used.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "desk/output/manifest.h"

namespace ventrix::desk {

/// The folder that the path leads to, without a closing separator; links are followed as far as they exist.
std::filesystem::path RealOutput(const std::filesystem::path& folder);

/// Refuses what no option allows: something that is not a folder, a folder that is or holds a home folder or
/// a root of the machine or of a drive, one that holds an input, one with a mount point in it.
std::string WhyNeverAllowed(const std::filesystem::path& output,
                            const std::vector<std::filesystem::path>& inputs);

/// Refuses a folder with files that no run made. With `force` that is only a folder at the root of the
/// machine: the system or another program keeps files there.
std::string WhyNotOurs(const std::filesystem::path& output, const Manifest& manifest, bool force);

/// Why the folder must be used where it is: a mount point and the current folder cannot be moved aside, nor
/// can a folder whose parent this process may not write. Empty if it can be moved, or does not exist.
std::string WhyNotMovable(const std::filesystem::path& output);

/// Refuses a folder that has to be used where it is, for the reason `notMovable`, if it holds foreign files
/// or cannot be written.
std::string WhyNotUsableInPlace(const std::filesystem::path& output, const Manifest& manifest,
                                const std::string& notMovable);

}  // namespace ventrix::desk
