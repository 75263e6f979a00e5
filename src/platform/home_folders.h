// The home folders of the machine's users. Paths are native.
#pragma once

#include <filesystem>
#include <vector>

namespace ventrix::platform {

/// This user's home folder as the environment names it, and those of the machine's accounts. They need not
/// exist, and one may be given twice.
std::vector<std::filesystem::path> HomeFolders();

}  // namespace ventrix::platform
