#include "platform/drives.h"

#include <algorithm>

// System notation is what the system itself takes. Native notation differs from it in the separators only:
// slashes, which the system takes, too. A program may set a table all the same, to place drives in a folder
// of its own; the tests do. It holds for this copy of the library, and what is not in it is the system's.

namespace ventrix::platform {
namespace {

DriveTable processDrives;

/// The path with one kind of separators, each of which counts once; two at the start name a server.
std::string WithSeparators(std::string_view path, char separator) {
    std::string text;
    for (const char c : path) {
        const bool isSeparator = c == '\\' || c == '/';
        if (!isSeparator || text.size() < 2 || text.back() != separator) {
            text += isSeparator ? separator : c;
        }
    }
    return text;
}

bool LiesIn(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

bool HasBackslash(std::string_view path) {
    return path.find('\\') != std::string_view::npos;
}

}  // namespace

const DriveTable& ProcessDrives() {
    return processDrives;
}

std::vector<std::string> MalformedProcessDrives() {
    return {};
}

void SetProcessDrives(const DriveTable& drives) {
    processDrives = drives;
}

std::string ToNative(std::string_view path) {
    if (!processDrives.empty() && HasBackslash(path) && IsAbsoluteSystemPath(path)) {
        const std::string mapped = ToNative(processDrives, path);
        if (!mapped.empty()) {
            return mapped;
        }
    }
    return WithSeparators(path, '/');
}

std::optional<std::string> ToSystem(std::string_view nativePath) {
    const std::string native = WithSeparators(nativePath, '/');
    const Drive* best = nullptr;
    for (const Drive& drive : processDrives) {
        if (LiesIn(native, drive.folder) && (best == nullptr || drive.folder.size() > best->folder.size())) {
            best = &drive;
        }
    }
    if (best == nullptr) {
        return WithSeparators(native, '\\');
    }
    const std::size_t rest = std::min(best->folder.size() + 1, native.size());
    return best->root + WithSeparators(std::string_view(native).substr(rest), '\\');
}

}  // namespace ventrix::platform
