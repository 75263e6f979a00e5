// The two notations of a path. System notation has drive letters, servers and backslashes (`C:\docs\a.xml`);
// native notation is what the operating system takes. A drive table maps roots in system notation to native
// folders. Strings are UTF-8. On Windows, native notation has slashes in place of backslashes, and the table
// of the process is empty: drives and servers are the system's.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ventrix::platform {

struct Drive {
    /// In system notation, with its closing backslash: `C:\`, `\\server\`, `\\server\share\`.
    std::string root;
    /// In native notation, absolute, without a closing slash, except for `/` itself.
    std::string folder;

    bool operator==(const Drive&) const = default;
};

using DriveTable = std::vector<Drive>;

/// Parses a table such as `C=/srv/c;D=/srv/d;\\server\=/mnt/server`. A drive may be written `C`, `C:` or
/// `C:\`, in either case, a server with or without its closing backslash. `Z:\` is mapped to `/` unless the
/// text maps it elsewhere. Of two entries for one root the later one counts. An entry without a valid root or
/// without an absolute folder is ignored.
DriveTable ParseDrives(std::string_view text);

/// The entries of such a text that ParseDrives ignores, as written. Empty ones are left out.
std::vector<std::string> MalformedDrives(std::string_view text);

/// The text that ParseDrives parses to the same table.
std::string FormatDrives(const DriveTable& drives);

/// Converts a path to native notation:
/// - `X:\...` and `\\server\...` begin with the folder of the longest matching root in the table; roots are
///   compared without regard to case. A root that is not in the table gives the empty string, which every
///   system call rejects as a missing file.
/// - `X:a` is read as `X:\a`. A rooted path without a drive (`\a`) starts at `/`. A relative path stays
///   relative.
/// - An absolute native path without backslashes does not change. In one with backslashes, as it results from
///   appending a system path to it, they are read as separators.
/// - Repeated separators count as one. "." and ".." are resolved without looking at the file system, never
///   above the root. A closing separator stays. Empty gives empty.
std::string ToNative(const DriveTable& drives, std::string_view path);

/// Converts a native path to system notation, on the drive whose folder is the longest one that contains it.
/// A relative path stays relative. Repeated slashes count as one; a closing slash becomes a backslash.
/// Nothing if the path has no system notation: a name contains a backslash, the path is not on a mapped
/// drive, or a relative path begins like a drive ("a:b"). Empty gives empty.
std::optional<std::string> ToSystem(const DriveTable& drives, std::string_view nativePath);

/// True if the path begins with a drive letter, a colon and a separator, or with two backslashes and a name.
bool IsAbsoluteSystemPath(std::string_view path);

/// The table of the process, on POSIX as the environment variable VENTRIX_DRIVES defines it now. It is kept
/// in the environment so that a module which is loaded later, with its own copy of this library, sees the
/// same table. The reference is valid until this thread calls the function again.
const DriveTable& ProcessDrives();

/// The entries of VENTRIX_DRIVES that are not in this table because they are malformed.
std::vector<std::string> MalformedProcessDrives();

/// Sets the table: on POSIX in VENTRIX_DRIVES, for child processes, too; on Windows for this library only.
void SetProcessDrives(const DriveTable& drives);

/// The two conversions with the table of the process.
std::string ToNative(std::string_view path);
std::optional<std::string> ToSystem(std::string_view nativePath);

}  // namespace ventrix::platform
