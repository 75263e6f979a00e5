// The two notations of a path. System notation has drive letters, servers and backslashes (`C:\docs\a.xml`);
// native notation is what the machine's own calls take. A drive table says which folder stands behind which
// root. Texts are UTF-8. Where the machine's own notation is the system notation, all of this is the
// identity.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ventrix::platform {

struct Drive {
    std::string
        root;  ///< In system notation, with its closing backslash: `C:\`, `\\server\`, `\\server\share\`.
    std::string folder;  ///< Native, absolute, without a closing slash; the root of the machine is `/`.

    bool operator==(const Drive&) const = default;
};

using DriveTable = std::vector<Drive>;

/// Reads `C=/srv/c;D=/srv/d;\\server\=/mnt/server`. A root may be written `C`, `C:` or `C:\`, a letter in
/// either case; a server with or without its closing backslash. `Z:\` stands for `/` unless the text gives Z
/// a folder. Of two entries for one root the later counts. An entry without a usable root or an absolute
/// folder is dropped.
DriveTable ParseDrives(std::string_view text);

/// The text that ParseDrives reads back as the same table.
std::string FormatDrives(const DriveTable& drives);

/// Native notation of a path.
/// - `X:\...` and `\\server\...`: the folder of the longest root that the table holds, letters and servers
/// compared
///   without case. An unknown root gives the empty text, which every call of the machine refuses as missing.
/// - An absolute native path without a backslash comes back unchanged. One with backslashes behind it, as a
/// join makes
///   it, has them read as separators.
/// - A rooted path without a drive (`\a`) starts at the machine's root; a relative path stays relative; `X:a`
/// is `X:\a`. Runs of separators act like one, and "." and ".." are resolved in the text, never above the
/// root. A closing separator stays. Empty gives empty.
std::string ToNative(const DriveTable& drives, std::string_view path);

/// System notation of a native path: the drive whose folder is the longest that leads to it; a relative path
/// stays relative. Runs of slashes act like one; a closing slash stays as a backslash. Nothing if the path
/// cannot be told: a name holds a backslash, no drive reaches it, or a relative path begins like a drive
/// ("a:b"). Empty gives empty.
std::optional<std::string> ToSystem(const DriveTable& drives, std::string_view nativePath);

/// True for a text that begins with a drive letter and a colon and separator, or with two backslashes and a
/// name.
bool IsAbsoluteSystemPath(std::string_view path);

/// The process's table, as the environment variable VENTRIX_DRIVES has it now. A module that is loaded later,
/// with a copy of this library of its own, sees the same table.
const DriveTable& ProcessDrives();

/// Sets the process's table, by setting VENTRIX_DRIVES for this process and what it starts.
void SetProcessDrives(const DriveTable& drives);

/// The two conversions with the process's table.
std::string ToNative(std::string_view path);
std::optional<std::string> ToSystem(std::string_view nativePath);

}  // namespace ventrix::platform
