#include "platform/posix/native_paths.h"

namespace ventrix::platform {

std::string NativeParent(const std::string& nativePath) {
    if (nativePath.empty()) {
        return {};
    }
    const std::size_t nameEnd = nativePath.find_last_not_of('/');
    if (nameEnd == std::string::npos) {
        return "/";
    }
    const std::size_t slash = nativePath.rfind('/', nameEnd);
    if (slash == std::string::npos) {
        return ".";
    }
    const std::size_t parentEnd = nativePath.find_last_not_of('/', slash);
    return parentEnd == std::string::npos ? "/" : nativePath.substr(0, parentEnd + 1);
}

}  // namespace ventrix::platform
