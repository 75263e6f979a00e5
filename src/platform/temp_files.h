// Where temporary files go, and names for them. Paths are UTF-8 in system notation.
#pragma once

#include <string>
#include <string_view>

namespace ventrix::platform {

/// The folder for temporary files with its closing backslash. Empty if system notation cannot tell it.
std::string TempFolder();

/// Creates an empty file with a new name in `folder`: up to three bytes of `prefix`, hexadecimal digits,
/// ".tmp". Only the owner may read it. The caller deletes it. Empty if that fails.
std::string MakeTempFile(std::string_view folder, std::string_view prefix);

}  // namespace ventrix::platform
