// The folder for temporary files, and new files in it. Paths are UTF-8 in system notation.
#pragma once

#include <string>
#include <string_view>

namespace ventrix::platform {

/// The folder for temporary files, with its closing backslash. Empty if it has no system notation.
std::string TempFolder();

/// Creates an empty file in `folder` and returns its path. The name is new: up to three bytes of `prefix`,
/// hexadecimal digits and ".tmp". Only the owner can read the file. The caller deletes it. Empty on failure.
std::string MakeTempFile(std::string_view folder, std::string_view prefix);

}  // namespace ventrix::platform
