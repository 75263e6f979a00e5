#include "desk/xml/reference_path.h"

#include <libxml/uri.h>
#include <libxml/xmlstring.h>

#include <algorithm>
#include <cctype>
#include <vector>

#include "desk/xml/xml_handles.h"
#include "platform/drives.h"

namespace ventrix::desk {
namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// A "%" that is no escape stays: such names are found in the field, and no other reading of them makes
/// sense.
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

/// The length of the scheme with its colon; 0 without one. One letter is a drive, not a scheme.
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

std::string DrivePath(std::string text) {
    std::replace(text.begin(), text.end(), '/', '\\');
    return platform::ToNative(text);
}

/// What stands behind "file:", as a path: "///a", "//localhost/a" and "/a" are one file.
std::string_view FileUrlPath(std::string_view rest) {
    for (const std::string_view host : {"//localhost/", "///"}) {
        if (rest.starts_with(host)) {
            rest.remove_prefix(host.size() - 1);
            break;
        }
    }
    return HasDrive(rest.substr(std::min<std::size_t>(1, rest.size()))) ? rest.substr(1) : rest;
}

ReferenceTarget FileTarget(std::string_view written, std::string_view folder) {
    std::string text = PercentDecoded(written);
    ReferenceTarget target;
    if (HasDrive(text)) {
        text = DrivePath(text);
        if (text.empty()) {
            target.remark = "no folder stands behind this drive";
            return target;
        }
    }
    target.remark = WhyUnnameable(text);
    if (target.remark.empty()) {
        target.path = NormalPath(text.starts_with('/') ? text : std::string(folder) + text);
    }
    return target;
}

}  // namespace

std::string WhyUnnameable(std::string_view nativePath) {
    if (std::any_of(nativePath.begin(), nativePath.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; })) {
        return "the name holds a control character";
    }
    if (nativePath.find('\\') != std::string_view::npos) {
        return "the name holds a backslash; separate folders with slashes";
    }
    if (xmlCheckUTF8(reinterpret_cast<const xmlChar*>(std::string(nativePath).c_str())) == 0) {
        return "the name is no valid UTF-8";
    }
    return {};
}

std::string NormalPath(std::string_view absolutePath) {
    std::vector<std::string_view> names;
    for (std::size_t start = 0; start <= absolutePath.size();) {
        const std::size_t end = std::min(absolutePath.find('/', start), absolutePath.size());
        const std::string_view name = absolutePath.substr(start, end - start);
        if (name == ".." && !names.empty()) {
            names.pop_back();
        } else if (!name.empty() && name != "." && name != "..") {
            names.push_back(name);
        }
        start = end + 1;
    }
    std::string path;
    for (const std::string_view name : names) {
        path.append("/").append(name);
    }
    return path.empty() ? "/" : path;
}

std::string FolderOf(std::string_view absolutePath) {
    return std::string(absolutePath.substr(0, absolutePath.rfind('/') + 1));
}

ReferenceTarget TargetOf(std::string_view reference, std::string_view folder) {
    const std::string_view text = reference.substr(0, reference.find('#'));
    const std::size_t scheme = SchemeLength(text);
    if (scheme == 0) {
        return text.empty() ? ReferenceTarget{} : FileTarget(text, folder);
    }
    const std::string name = Lower(text.substr(0, scheme));
    if (name == "file:") {
        return FileTarget(FileUrlPath(text.substr(scheme)), folder);
    }
    // The module knows only these as web addresses; it would report any other as a broken link.
    return name == "http:" || name == "https:" ? ReferenceTarget{.url = std::string(reference)}
                                               : ReferenceTarget{};
}

std::string FileUri(const std::string& absolutePath) {
    const XmlText escaped(xmlURIEscapeStr(Xml(absolutePath.c_str()), Xml("/")));
    return "file://" + std::string(View(escaped.get()));
}

}  // namespace ventrix::desk
