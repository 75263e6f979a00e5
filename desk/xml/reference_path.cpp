#include "desk/xml/reference_path.h"

#include <algorithm>
#include <cctype>

namespace ventrix::desk {
namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// A "%" that does not start an escape is kept: authors write names like "100%.dita" without escaping them.
std::string PercentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = i + 2 < text.size() && text[i] == '%' ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low < 0) {
            decoded += text[i];
        } else {
            decoded += static_cast<char>(high * 16 + low);
            i += 2;
        }
    }
    return decoded;
}

/// The length of the scheme with its colon; 0 if there is none. A single letter is a drive, not a scheme.
std::size_t SchemeLength(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon < 2 ||
        std::isalpha(static_cast<unsigned char>(text[0])) == 0) {
        return 0;
    }
    const bool plain =
        std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(colon), [](char c) {
            return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '+' || c == '-' || c == '.';
        });
    return plain ? colon + 1 : 0;
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

bool HasDrive(std::string_view text) {
    return text.size() >= 3 && std::isalpha(static_cast<unsigned char>(text[0])) != 0 && text[1] == ':' &&
           (text[2] == '/' || text[2] == '\\');
}

NativePath DrivePath(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return ToNative(SystemPath{path});
}

/// The path in what follows "file:". "///a", "//localhost/a" and "/a" name the same file, and the slash
/// before a drive ("/C:/a") is dropped.
std::string_view FileUrlPath(std::string_view rest) {
    for (const std::string_view host : {"//localhost/", "///"}) {
        if (rest.starts_with(host)) {
            rest.remove_prefix(host.size() - 1);
            break;
        }
    }
    return HasDrive(rest.substr(std::min<std::size_t>(1, rest.size()))) ? rest.substr(1) : rest;
}

ReferenceTarget FileTarget(std::string_view written, const NativePath& folder) {
    NativePath path{PercentDecoded(written)};
    ReferenceTarget target;
    if (HasDrive(path.utf8)) {
        path = DrivePath(path.utf8);
        if (path.Empty()) {
            target.remark = "the drive is not mapped to a folder; map it with --drive";
            return target;
        }
    }
    target.remark = WhyUnnameable(path);
    if (target.remark.empty()) {
        target.path = NormalPath(IsAbsolute(path) ? path : NativePath{folder.utf8 + path.utf8});
    }
    return target;
}

}  // namespace

ReferenceTarget TargetOf(std::string_view reference, const NativePath& folder) {
    const std::string_view text = reference.substr(0, reference.find('#'));
    const std::size_t scheme = SchemeLength(text);
    if (scheme == 0) {
        return text.empty() ? ReferenceTarget{} : FileTarget(text, folder);
    }
    const std::string name = Lower(text.substr(0, scheme));
    if (name == "file:") {
        return FileTarget(FileUrlPath(text.substr(scheme)), folder);
    }
    // The module recognises only these as web addresses and would report any other as a broken link.
    return name == "http:" || name == "https:" ? ReferenceTarget{.url = std::string(reference)}
                                               : ReferenceTarget{};
}

}  // namespace ventrix::desk
