// Operations on native paths.
#pragma once

#include <string>

namespace ventrix::platform {

/// The folder of a native path, without a closing slash: "." for a bare name, "/" at the root. Slashes at the
/// end of the path are ignored. Empty gives empty.
std::string NativeParent(const std::string& nativePath);

}  // namespace ventrix::platform
