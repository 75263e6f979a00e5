// Small readings of native paths.
#pragma once

#include <string>

namespace ventrix::platform {

/// The folder of a native path, without a closing slash: "." for a bare name, "/" at the root. Closing
/// slashes of the path do not count. Empty gives empty.
std::string NativeParent(const std::string& nativePath);

/// The file of the main program, absolute. Empty if the system does not tell.
std::string ProgramFile();

}  // namespace ventrix::platform
