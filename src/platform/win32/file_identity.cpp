#include "platform/file_identity.h"

#include "platform/win32/system_calls.h"

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
    const Handle opened = OpenForProperties(CallPathFrom(path));
    ::BY_HANDLE_FILE_INFORMATION found = {};
    if (!opened.IsOpen() || ::GetFileInformationByHandle(opened.Get(), &found) == 0) {
        return std::nullopt;
    }
    return FileIdentity{found.dwVolumeSerialNumber,
                        (std::uint64_t{found.nFileIndexHigh} << 32) | found.nFileIndexLow};
}

bool LiesIn(const fs::path& path, const fs::path& folder) {
    const auto identity = IdentityOf(folder);
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error).lexically_normal();
    if (!identity || error ||
        ::GetFileAttributesW(CallPathFrom(absolute).c_str()) == INVALID_FILE_ATTRIBUTES) {
        return false;
    }
    const fs::path real = fs::canonical(absolute, error);
    return HasAncestor(absolute, *identity) || (!error && HasAncestor(real, *identity));
}

}  // namespace ventrix::platform
