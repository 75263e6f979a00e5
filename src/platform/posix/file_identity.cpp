#include "platform/file_identity.h"

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace ventrix::platform {
namespace {

bool HasAncestor(fs::path path, const FileIdentity& folder) {
    while (true) {
        if (IdentityOf(path) == folder) {
            return true;
        }
        const fs::path parent = path.parent_path();
        if (parent == path || parent.empty()) {
            return false;
        }
        path = parent;
    }
}

}  // namespace

std::optional<FileIdentity> IdentityOf(const fs::path& path) {
    struct stat found = {};
    if (::stat(path.c_str(), &found) != 0) {
        return std::nullopt;
    }
    return FileIdentity{found.st_dev, found.st_ino};
}

bool LiesIn(const fs::path& path, const fs::path& folder) {
    const auto identity = IdentityOf(folder);
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error).lexically_normal();
    struct stat itself = {};
    if (!identity || error || ::lstat(absolute.c_str(), &itself) != 0) {
        return false;
    }
    const fs::path real = fs::canonical(absolute, error);
    return HasAncestor(absolute, *identity) || (!error && real != absolute && HasAncestor(real, *identity));
}

}  // namespace ventrix::platform
