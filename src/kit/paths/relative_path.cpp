#include "kit/paths/relative_path.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

#include "kit/paths/file_path.h"
#include "kit/paths/rivlet.h"
#include "kit/text/case_table.h"
#include "kit/text/strings.h"

namespace ventrix {
namespace {

constexpr std::string_view kUp = "..\\";
constexpr std::size_t kMostUpBytes = 4092;

bool IsDrive(std::string_view text) {
    return text.size() == 2 && text[1] == ':';
}

// Takes one separator off the end.
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

// Whether a component ends inside the stretch. Separators at its start end none.
bool HoldsComponent(std::string_view stretch) {
    const std::size_t start = stretch.find_first_not_of("\\/:");
    return start != std::string_view::npos && stretch.find_first_of("\\/:", start) != std::string_view::npos;
}

// The rest of a path on the drive that the folder is the root of.
std::string_view BehindDrive(std::string_view path) {
    path.remove_prefix(2);
    return !path.empty() && Q_IsSeparator(path[0]) ? path.substr(1) : path;
}

// The way up from the folder and down to the path, which part in the component at the matched length.
std::string UpAndDown(std::string_view path, std::string_view folder, std::size_t matched) {
    std::size_t start = std::min(matched, path.size());
    while (start > 0 && !Q_IsSeparator(path[start - 1])) {
        --start;
    }
    // Two that share no separator, as those of a drive in both styles of separators, have no common folder.
    if (start == 0) {
        return std::string(path);
    }
    const std::string_view left = folder.substr(start - 1);
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
        return std::string(BehindDrive(path));
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

// The byte behind a "%", or 0 if there is none to be read.
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
