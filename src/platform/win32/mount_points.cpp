#include "platform/mount_points.h"

#include "platform/win32/system_calls.h"

namespace fs = std::filesystem;

namespace ventrix::platform {
namespace {

bool IsMounted(const ::WIN32_FIND_DATAW& found) {
    return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT;
}

void AddBelow(const fs::path& folder, std::vector<fs::path>& points) {
    ::WIN32_FIND_DATAW found = {};
    const HANDLE search = ::FindFirstFileW(CallPathFrom(folder / L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::wstring_view name = found.cFileName;
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (!isFolder || name == L"." || name == L"..") {
            continue;
        }
        if (IsMounted(found)) {
            points.push_back(folder / name);
        } else if ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
            AddBelow(folder / name, points);
        }
    } while (::FindNextFileW(search, &found) != 0);
    ::FindClose(search);
}

}  // namespace

bool IsMountPoint(const fs::path& folder) {
    std::error_code error;
    const fs::path absolute = fs::absolute(folder, error).lexically_normal();
    if (error || absolute == absolute.root_path()) {
        return !error && ::GetFileAttributesW(CallPathFrom(absolute).c_str()) != INVALID_FILE_ATTRIBUTES;
    }
    ::WIN32_FIND_DATAW found = {};
    const HANDLE search = ::FindFirstFileW(CallPathFrom(absolute).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return false;
    }
    ::FindClose(search);
    return IsMounted(found);
}

std::vector<fs::path> MountPointsBelow(const fs::path& folder) {
    std::vector<fs::path> points;
    AddBelow(folder, points);
    return points;
}

}  // namespace ventrix::platform
