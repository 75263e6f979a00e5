// The two notations of a path as two types. NativePath is what the machine's own calls take, SystemPath is
// what the module and the host's clients exchange: drive letters or servers, and backslashes. Only ToNative
// and ToSystem convert between them, with the process's drive table (platform/drives.h). Both hold UTF-8; a
// native name that is not UTF-8 keeps its bytes. An empty path means that there is none.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace ventrix::desk {

struct NativePath {
    std::string utf8;

    bool Empty() const { return utf8.empty(); }
    bool operator==(const NativePath&) const = default;
    bool operator<(const NativePath& other) const { return utf8 < other.utf8; }
};

struct SystemPath {
    std::string utf8;

    bool Empty() const { return utf8.empty(); }
    bool operator==(const SystemPath&) const = default;
};

/// Empty if the path is empty or its drive or server is not mapped.
NativePath ToNative(const SystemPath& path);

/// Nothing if no drive is mapped to a folder above the path, or a name contains a backslash. Empty gives
/// empty.
std::optional<SystemPath> ToSystem(const NativePath& path);

/// The same path for the standard library, whatever encoding that uses on this machine; and back.
std::filesystem::path ToFilesystem(const NativePath& path);
NativePath FromFilesystem(const std::filesystem::path& path);

/// Whether the path begins at a root: with a slash, on Windows also with a drive.
bool IsAbsolute(const NativePath& path);

/// The path made absolute against the current folder, without "." and "..". Links stay as they are written,
/// except where removing a ".." would lead to another place. Empty gives empty.
NativePath AbsolutePath(const NativePath& path);

/// Where a path leads: links are followed as far as the path exists.
NativePath RealPath(const NativePath& path);

/// True if `path` is the folder or is in it. Compares names; pass the results of RealPath.
bool IsBelowOrEqual(const NativePath& path, const NativePath& folder);

/// An absolute path with ".", ".." and repeated slashes removed by name alone, never going above the root. A
/// closing slash is removed too, except from the root.
NativePath NormalPath(const NativePath& absolutePath);

/// The folder part of an absolute path, with its closing slash.
NativePath FolderOf(const NativePath& absolutePath);

/// The deepest folder that contains both absolute paths, with its closing slash.
NativePath CommonFolder(const NativePath& a, const NativePath& b);

/// Whether the path is longer than those that the standard library opens on this system.
bool IsTooLong(const NativePath& path);

/// Why the module cannot be given this path, in one line: a control character, a backslash, bytes that are
/// not UTF-8, or more characters than this system allows here. Empty if it can.
std::string WhyUnnameable(const NativePath& path);

/// A path as it appears in a URI reference: everything except slashes and unreserved characters
/// percent-encoded.
std::string PercentEncoded(std::string_view path);

/// The `file:` URI of an absolute path, for libraries that accept nothing else.
std::string FileUri(const NativePath& absolutePath);

}  // namespace ventrix::desk
