#include "desk/paths/paths.h"

#include <libxml/xmlstring.h>

#include <algorithm>
#include <vector>

#include "platform/drives.h"
#include "platform/native_roots.h"
#include "platform/path_text.h"
#include "platform/wide_text.h"

namespace fs = std::filesystem;

namespace ventrix::desk {

NativePath ToNative(const SystemPath& path) {
    return {platform::ToNative(path.utf8)};
}

std::optional<SystemPath> ToSystem(const NativePath& path) {
    auto system = platform::ToSystem(path.utf8);
    return system ? std::optional(SystemPath{std::move(*system)}) : std::nullopt;
}

fs::path ToFilesystem(const NativePath& path) {
    return platform::PathFromUtf8(path.utf8);
}

NativePath FromFilesystem(const fs::path& path) {
    return {platform::Utf8FromPath(path)};
}

bool IsAbsolute(const NativePath& path) {
    return platform::NativeRootLength(path.utf8) > 0;
}

NativePath AbsolutePath(const NativePath& path) {
    if (path.Empty()) {
        return path;
    }
    std::error_code error;
    const fs::path absolute = fs::absolute(ToFilesystem(path), error);
    const NativePath normal = FromFilesystem(absolute.lexically_normal());
    const NativePath real = RealPath(FromFilesystem(absolute));
    // The ".." after a link is the parent of the link's target, not of the link.
    return real == RealPath(normal) ? normal : real;
}

NativePath RealPath(const NativePath& path) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(ToFilesystem(path), error);
    return FromFilesystem(error ? ToFilesystem(path).lexically_normal() : real);
}

bool IsBelowOrEqual(const NativePath& path, const NativePath& folder) {
    const fs::path relative = ToFilesystem(path).lexically_relative(ToFilesystem(folder));
    return !relative.empty() && *relative.begin() != "..";
}

NativePath NormalPath(const NativePath& absolutePath) {
    const std::size_t rootLength = platform::NativeRootLength(absolutePath.utf8);
    const std::string_view path = std::string_view(absolutePath.utf8).substr(rootLength);
    std::vector<std::string_view> names;
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string_view name = path.substr(start, end - start);
        if (name == ".." && !names.empty()) {
            names.pop_back();
        } else if (!name.empty() && name != "." && name != "..") {
            names.push_back(name);
        }
        start = end + 1;
    }
    NativePath normal{rootLength == 0 ? "/" : absolutePath.utf8.substr(0, rootLength)};
    for (const std::string_view name : names) {
        if (normal.utf8.back() != '/') {
            normal.utf8 += '/';
        }
        normal.utf8 += name;
    }
    return normal;
}

NativePath FolderOf(const NativePath& absolutePath) {
    return {absolutePath.utf8.substr(0, absolutePath.utf8.rfind('/') + 1)};
}

NativePath CommonFolder(const NativePath& a, const NativePath& b) {
    const auto ends = std::ranges::mismatch(a.utf8, b.utf8);
    return FolderOf({std::string(a.utf8.begin(), ends.in1)});
}

bool IsTooLong(const NativePath& path) {
    const std::size_t limit = platform::NativePathLimit();
    return limit > 0 && platform::WideFromUtf8(path.utf8).size() > limit;
}

std::string WhyUnnameable(const NativePath& path) {
    if (std::ranges::any_of(path.utf8,
                            [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; })) {
        return "the name contains a control character; rename the file";
    }
    if (path.utf8.find('\\') != std::string::npos) {
        return "the name contains a backslash; separate folders with slashes";
    }
    if (xmlCheckUTF8(reinterpret_cast<const xmlChar*>(path.utf8.c_str())) == 0) {
        return "the name is not valid UTF-8; rename the file";
    }
    if (IsTooLong(path)) {
        return "the path is longer than " + std::to_string(platform::NativePathLimit()) +
               " characters; move the files to a folder with a shorter path";
    }
    return {};
}

std::string PercentEncoded(std::string_view path) {
    constexpr std::string_view kKept =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.!~*'()@/";
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (kKept.find(c) != std::string_view::npos) {
            encoded += c;
        } else {
            encoded += {'%', kDigits[byte >> 4], kDigits[byte & 0xf]};
        }
    }
    return encoded;
}

std::string FileUri(const NativePath& absolutePath) {
    const std::string_view path = absolutePath.utf8;
    const std::size_t rootLength = platform::NativeRootLength(path);
    if (rootLength <= 1) {
        return "file://" + PercentEncoded(path);
    }
    const bool isServer = path.starts_with("//");
    return (isServer ? "file:" : "file:///") + std::string(path.substr(0, rootLength)) +
           PercentEncoded(path.substr(rootLength));
}

}  // namespace ventrix::desk
