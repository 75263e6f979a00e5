// The system's table of mounts, as /proc/self/mountinfo has it.
#pragma once

#include <filesystem>
#include <istream>
#include <vector>

namespace ventrix::platform {

/// The mount points of the table in its order: the fifth field of each line, its octal escapes resolved. A
/// line with fewer fields is skipped.
std::vector<std::filesystem::path> ReadMountTable(std::istream& table);

}  // namespace ventrix::platform
