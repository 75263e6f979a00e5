#include "kit/paths/relative_path.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

#include "kit/paths/file_path.h"
#include "kit/paths/rivlet.h"
#include "kit/text/strings.h"

namespace ventrix {
namespace {

// The path and the folder of the base are compared byte by byte through the case table, up to the first
// difference. They count as related if at least one component (a drive, a server or a name) ends within the
// matched part; otherwise the path stays absolute. If the whole folder matched and the path goes on with a
// separator, the result is the rest of the path. If not, the result climbs from the folder to the last common
// separator, one "..\" for each separator left in the folder, and descends from there to the path. The
// matched length may end inside a component ("ab" and "ac"), so both sides first step back to its start.

constexpr std::string_view kUp = "..\\";
constexpr std::size_t kMostUpBytes = 4092;

bool IsDrive(std::string_view text) {
    return text.size() == 2 && text[1] == ':';
}

// The text without one trailing separator.
std::string_view Trimmed(std::string_view text) {
    if (!text.empty() && Q_IsSeparator(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// The base's folder without its last separator.
std::string_view FolderOf(const char* base) {
    return Trimmed(std::string_view(base, static_cast<std::size_t>(Q_LeafOf(base) - base)));
}

std::string_view UrlFolderOf(const char* base) {
    const char* slash = std::strrchr(base, '/');
    return slash == nullptr ? std::string_view()
                            : std::string_view(base, static_cast<std::size_t>(slash - base));
}

unsigned char Fold(char byte) {
    return Q_FoldByte(static_cast<unsigned char>(byte));
}

std::size_t MatchLength(std::string_view path, std::string_view folder) {
    const auto differs = std::mismatch(path.begin(), path.end(), folder.begin(), folder.end(),
                                       [](char a, char b) { return Fold(a) == Fold(b); });
    return static_cast<std::size_t>(differs.first - path.begin());
}

// Whether a component ends within the text. Separators at its start do not end one.
bool HoldsComponent(std::string_view text) {
    const std::size_t start = text.find_first_not_of("\\/:");
    return start != std::string_view::npos && text.find_first_of("\\/:", start) != std::string_view::npos;
}

// The path without its drive and the separator after it.
std::string_view WithoutDrive(std::string_view path) {
    path.remove_prefix(2);
    return !path.empty() && Q_IsSeparator(path[0]) ? path.substr(1) : path;
}

// The relative path from the folder up to the last common separator and down to the path.
std::string UpAndDown(std::string_view path, std::string_view folder, std::size_t matched) {
    std::size_t start = std::min(matched, path.size());
    while (start > 0 && !Q_IsSeparator(path[start - 1])) {
        --start;
    }
    // Without a common separator there is no common folder: "C:/a" and "C:\b" share only the drive's letters.
    if (start == 0) {
        return std::string(path);
    }
    const std::string_view left = folder.substr(start - 1);  // from the common separator on
    const auto levels = static_cast<std::size_t>(std::count_if(left.begin(), left.end(), Q_IsSeparator));
    if (levels * kUp.size() > kMostUpBytes) {
        return std::string(path);
    }
    std::string relative;
    for (std::size_t level = 0; level < levels; ++level) {
        relative += kUp;
    }
    return relative.append(path.substr(start));
}

std::string Relative(std::string_view path, std::string_view folder) {
    const std::size_t matched = MatchLength(path, folder);
    if (!HoldsComponent(path.substr(0, matched))) {
        return std::string(path);
    }
    folder = Trimmed(folder);
    if (matched >= folder.size() && matched < path.size() && Q_IsSeparator(path[matched])) {
        return std::string(path.substr(matched + 1));
    }
    if (IsDrive(folder) && IsDrive(path.substr(0, 2)) && path[0] == folder[0]) {
        return std::string(WithoutDrive(path));
    }
    return UpAndDown(path, folder, matched);
}

void MakeUrlRelative(char* path, const char* base) {
    char* url = nullptr;
    const bool isDone = Q_RelativeUrl(base, path, &url) == 0;
    const Q_String owner(url);
    if (!isDone || Q_StrLen(url) >= kPathBufferSize) {
        return;
    }
    Q_StrCopy(path, url);
    if (Q_IsLocalPath(path)) {
        Q_UrlToPath(path);
    }
}

// The byte that two hexadecimal digits after a "%" give; 0 if they are malformed.
char EscapedByte(const char* digits) {
    unsigned char value = 0;
    const char* end = digits + std::min<std::uint32_t>(Q_StrLen(digits), 2);
    const auto read = std::from_chars(digits, end, value, 16);
    return read.ec == std::errc() && read.ptr == digits + 2 ? static_cast<char>(value) : '\0';
}

}  // namespace

void MakePathRelative(char* path, const char* base) {
    if (path == nullptr) {
        Q_Fatal();
    }
    if (base == nullptr || !Q_IsAbsolutePath(base) || !Q_IsAbsolutePath(path)) {
        return;
    }
    if (Q_IsNetFile(path)) {
        if (Q_IsNetFile(base)) {
            MakeUrlRelative(path, base);
        }
        return;
    }
    const std::string relative = Relative(path, Q_IsNetFile(base) ? UrlFolderOf(base) : FolderOf(base));
    if (relative.size() < kPathBufferSize) {
        Q_StrCopy(path, relative.c_str());
    }
}

void Q_UrlToPath(char* text) {
    if (text == nullptr) {
        Q_Fatal();
    }
    char* output = text;
    while (*text != '\0') {
        const char byte = *text == '%' ? EscapedByte(text + 1) : '\0';
        if (byte != '\0') {
            *output++ = byte;
            text += 3;
            continue;
        }
        *output++ = *text == '/' ? '\\' : *text;
        ++text;
    }
    *output = '\0';
}

}  // namespace ventrix
