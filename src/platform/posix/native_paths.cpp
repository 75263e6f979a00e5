#include "platform/posix/native_paths.h"

#include <filesystem>
#include <system_error>

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

std::string ProgramFile() {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : file.string();
}

}  // namespace ventrix::platform
