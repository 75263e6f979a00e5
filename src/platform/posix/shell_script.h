// Executable text files that name no interpreter: the system does not run them, a shell does.
#pragma once

#include <string>

namespace ventrix::platform {

inline constexpr char kShell[] = "/bin/sh";

/// True for a file that is not empty and whose first line holds no zero byte within 128 bytes. The path is
/// native.
bool LooksLikeScript(const std::string& path);

}  // namespace ventrix::platform
