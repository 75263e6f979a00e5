// Files that change as a whole: the new content is written to a new file in the same folder, which then takes
// the target's place. Paths are as wide calls take them.
#pragma once

#include <functional>
#include <string>

#include "platform/error_codes.h"
#include "platform/win32/system_calls.h"

namespace ventrix::platform {

/// The file that a write to a path replaces.
struct WriteTarget {
    std::wstring path;  ///< The path with links resolved, if the file exists.
    bool exists = false;
};

/// Finds the target of a write. kErrorAccessDenied for a folder, a device and a read-only file.
ErrorCode FindWriteTarget(const std::string& nativePath, WriteTarget& target);

/// A name for a new file in the folder of `path`, which no other file has.
std::wstring NameBeside(const std::wstring& path);

/// Puts the finished file at the target's place; permissions of an existing target stay. On failure the
/// target does not change and the file is removed.
ErrorCode TakePlace(const std::wstring& finished, const WriteTarget& target);

/// Writes a new file with `fill`, which returns false after an error that GetLastError gives, and puts it at
/// the target's place. With `durable`, the content reaches the disk before that.
ErrorCode ReplaceWhole(const WriteTarget& target, bool durable, const std::function<bool(HANDLE)>& fill);

}  // namespace ventrix::platform
