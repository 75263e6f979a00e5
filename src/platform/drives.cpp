#include "platform/drives.h"

#include <algorithm>
#include <cstddef>

namespace ventrix::platform {
namespace {

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}
bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
char LowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
char UpperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerAscii(x) == LowerAscii(y); });
}

bool StartsWithDrive(std::string_view path) {
    return path.size() >= 2 && IsLetter(path[0]) && path[1] == ':';
}

bool StartsWithServer(std::string_view path) {
    return path.size() >= 3 && path[0] == '\\' && IsSeparator(path[1]) && !IsSeparator(path[2]);
}

/// A path split into its components, with "." and ".." resolved. If `kind` is kDrive or kServer, the first
/// component is `X:` or the server's name, and a ".." never removes it.
struct Components {
    enum class Kind { kRelative, kRooted, kDrive, kServer } kind = Kind::kRelative;
    std::vector<std::string_view> names;
    bool closed = false;  ///< The path ends in a separator.
};

void Climb(Components& parts) {
    const bool hasRootName =
        parts.kind == Components::Kind::kDrive || parts.kind == Components::Kind::kServer;
    if (parts.names.size() > (hasRootName ? 1u : 0u) && parts.names.back() != "..") {
        parts.names.pop_back();
    } else if (parts.kind == Components::Kind::kRelative) {
        parts.names.emplace_back("..");
    }
}

void AddComponents(Components& parts, std::string_view text, bool backslashSeparates) {
    const auto separates = [&](char c) { return c == '/' || (backslashSeparates && c == '\\'); };
    parts.closed = !text.empty() && separates(text.back());
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = at;
        while (end < text.size() && !separates(text[end])) {
            ++end;
        }
        const std::string_view name = text.substr(at, end - at);
        if (name == "..") {
            Climb(parts);
        } else if (!name.empty() && name != ".") {
            parts.names.push_back(name);
        }
        at = end + 1;
    }
}

Components CutSystemPath(std::string_view path) {
    Components parts;
    if (StartsWithDrive(path)) {
        parts.kind = Components::Kind::kDrive;
        parts.names.push_back(path.substr(0, 2));
        AddComponents(parts, path.substr(2), true);
        return parts;
    }
    if (StartsWithServer(path)) {
        parts.kind = Components::Kind::kServer;
    } else if (!path.empty() && IsSeparator(path[0])) {
        parts.kind = Components::Kind::kRooted;
    }
    AddComponents(parts, path, true);
    return parts;
}

Components CutNativePath(std::string_view path) {
    Components parts;
    if (!path.empty() && path[0] == '/') {
        parts.kind = Components::Kind::kRooted;
    }
    AddComponents(parts, path, false);
    return parts;
}

std::string Join(const std::vector<std::string_view>& names, std::size_t from, char separator) {
    std::string joined;
    for (std::size_t i = from; i < names.size(); ++i) {
        if (i > from) {
            joined += separator;
        }
        joined += names[i];
    }
    return joined;
}

/// Joins `head`, a root or folder or empty for a relative path, and `rest`, the components after it.
std::string Assemble(std::string head, const std::string& rest, char separator, bool closed) {
    if (head.empty() && rest.empty()) {
        return closed ? std::string(".") + separator : ".";
    }
    if (!head.empty() && head.back() != separator && !rest.empty()) {
        head += separator;
    }
    head += rest;
    if (closed && head.back() != separator) {
        head += separator;
    }
    return head;
}

/// Whether the components of `root` are the first ones of `path`.
bool LeadsTo(const Components& root, const Components& path, bool ignoreCase) {
    if (root.kind != path.kind || root.names.size() > path.names.size()) {
        return false;
    }
    return std::equal(root.names.begin(), root.names.end(), path.names.begin(),
                      [&](std::string_view a, std::string_view b) {
                          return ignoreCase ? EqualIgnoringCase(a, b) : a == b;
                      });
}

/// The root in its canonical form (`C:\`, `\\server\`); empty if the text is not a root.
std::string CanonicalRoot(std::string_view text) {
    if (text.size() == 1 && IsLetter(text[0])) {
        return std::string(1, UpperAscii(text[0])) + ":\\";
    }
    if (!StartsWithDrive(text) && !StartsWithServer(text)) {
        return {};
    }
    std::string root = StartsWithServer(text) ? "\\\\" : "";
    for (const std::string_view name : CutSystemPath(text).names) {
        root.append(name).append("\\");
    }
    if (StartsWithDrive(root)) {
        root[0] = UpperAscii(root[0]);
    }
    return root;
}

std::string CanonicalFolder(std::string_view text) {
    while (text.size() > 1 && text.back() == '/') {
        text.remove_suffix(1);
    }
    return text.empty() || text[0] != '/' ? std::string() : std::string(text);
}

void SetDrive(DriveTable& drives, Drive drive) {
    const auto same = [&](const Drive& other) { return EqualIgnoringCase(other.root, drive.root); };
    std::erase_if(drives, same);
    drives.push_back(std::move(drive));
}

std::optional<Drive> ReadEntry(std::string_view entry) {
    const std::size_t equals = entry.find('=');
    if (equals == std::string_view::npos) {
        return std::nullopt;
    }
    Drive drive = {CanonicalRoot(entry.substr(0, equals)), CanonicalFolder(entry.substr(equals + 1))};
    return drive.root.empty() || drive.folder.empty() ? std::nullopt : std::optional(std::move(drive));
}

std::vector<std::string_view> EntriesOf(std::string_view text) {
    std::vector<std::string_view> entries;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(';'), text.size());
        if (end > 0) {
            entries.push_back(text.substr(0, end));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return entries;
}

std::string MapToFolder(const DriveTable& drives, const Components& path) {
    const Drive* best = nullptr;
    std::size_t bestLength = 0;
    for (const Drive& drive : drives) {
        const Components root = CutSystemPath(drive.root);
        if (root.names.size() > bestLength && LeadsTo(root, path, true)) {
            best = &drive;
            bestLength = root.names.size();
        }
    }
    return best == nullptr ? std::string()
                           : Assemble(best->folder, Join(path.names, bestLength, '/'), '/', path.closed);
}

std::optional<std::string> MapToRoot(const DriveTable& drives, const Components& path) {
    const std::string native = Assemble("/", Join(path.names, 0, '/'), '/', false);
    std::string best;
    std::size_t bestLength = 0;
    for (const Drive& drive : drives) {
        const Components folder = CutNativePath(drive.folder);
        if (!LeadsTo(folder, path, false) || (!best.empty() && folder.names.size() <= bestLength)) {
            continue;
        }
        const std::string found =
            Assemble(drive.root, Join(path.names, folder.names.size(), '\\'), '\\', path.closed);
        // A longer root may map this part of the path elsewhere; only a result that converts back counts.
        if (CutNativePath(ToNative(drives, found)).names != CutNativePath(native).names) {
            continue;
        }
        best = found;
        bestLength = folder.names.size();
    }
    return best.empty() ? std::nullopt : std::optional(best);
}

}  // namespace

DriveTable ParseDrives(std::string_view text) {
    DriveTable drives;
    for (const std::string_view entry : EntriesOf(text)) {
        if (auto drive = ReadEntry(entry)) {
            SetDrive(drives, std::move(*drive));
        }
    }
    const auto isZ = [](const Drive& drive) { return drive.root == "Z:\\"; };
    if (std::none_of(drives.begin(), drives.end(), isZ)) {
        drives.push_back({"Z:\\", "/"});
    }
    return drives;
}

std::vector<std::string> MalformedDrives(std::string_view text) {
    std::vector<std::string> malformed;
    for (const std::string_view entry : EntriesOf(text)) {
        if (!ReadEntry(entry)) {
            malformed.emplace_back(entry);
        }
    }
    return malformed;
}

std::string FormatDrives(const DriveTable& drives) {
    std::string text;
    for (const Drive& drive : drives) {
        if (!text.empty()) {
            text += ';';
        }
        text.append(drive.root).append("=").append(drive.folder);
    }
    return text;
}

std::string ToNative(const DriveTable& drives, std::string_view path) {
    const bool native = !path.empty() && path[0] == '/' && path.find('\\') == std::string_view::npos;
    if (path.empty() || native) {
        return std::string(path);
    }
    const Components parts = CutSystemPath(path);
    if (parts.kind == Components::Kind::kDrive || parts.kind == Components::Kind::kServer) {
        return MapToFolder(drives, parts);
    }
    const char* head = parts.kind == Components::Kind::kRooted ? "/" : "";
    return Assemble(head, Join(parts.names, 0, '/'), '/', parts.closed);
}

std::optional<std::string> ToSystem(const DriveTable& drives, std::string_view nativePath) {
    if (nativePath.empty()) {
        return std::string();
    }
    if (nativePath.find('\\') != std::string_view::npos) {
        return std::nullopt;
    }
    const Components parts = CutNativePath(nativePath);
    if (parts.kind == Components::Kind::kRooted) {
        return MapToRoot(drives, parts);
    }
    std::string relative = Assemble("", Join(parts.names, 0, '\\'), '\\', parts.closed);
    return StartsWithDrive(relative) ? std::nullopt : std::optional(std::move(relative));
}

bool IsAbsoluteSystemPath(std::string_view path) {
    return (StartsWithDrive(path) && path.size() > 2 && IsSeparator(path[2])) || StartsWithServer(path);
}

}  // namespace ventrix::platform
