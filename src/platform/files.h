// Files by path in system notation, with the behaviour of NTFS where a caller can see it. Paths are UTF-8 and
// may be as long as the operating system allows. Nothing stays open between calls.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "platform/error_codes.h"
#include "platform/memory.h"

namespace ventrix::platform {

/// The size in units, terminator included, of the path buffers that callers use.
inline constexpr std::size_t kPathLimit = 4096;

/// Deletes a file, or the link that the path names. kErrorAccessDenied for a folder and for a read-only file;
/// kErrorSharingViolation for a file that a TextStream of this process has open.
ErrorCode RemoveFile(std::string_view path);

/// Copies a file with its permissions, replacing an existing target. The target changes as a whole, or on
/// failure not at all. kErrorAccessDenied if the target is read-only or one of the two is a folder,
/// kErrorSharingViolation if both are the same file. A target that is a link stays a link; the file that it
/// leads to is replaced.
ErrorCode CopyFileOver(std::string_view source, std::string_view target);

/// True if the path leads to a regular file that this process can read.
bool OpensForReading(std::string_view path);

/// Reads a complete file. On failure `content` does not change.
ErrorCode ReadWholeFile(std::string_view path, Bytes& content);
ErrorCode ReadWholeFile(std::string_view path, std::string& content);

/// Writes a complete file: creates it, or replaces its content and keeps its permissions. The file changes as
/// a whole, or on failure not at all. kErrorAccessDenied for a read-only file and for a folder. A link stays
/// a link.
ErrorCode WriteWholeFile(std::string_view path, std::string_view content);

/// Takes one piece of a file's content. False if it could not be written; further pieces are then useless.
using PutPiece = std::function<bool(std::string_view piece)>;

/// As above, for content in pieces: `produce` is called once and passes them to its argument one by one. If
/// it returns false, the write fails and the file does not change.
ErrorCode WriteWholeFile(std::string_view path, const std::function<bool(const PutPiece&)>& produce);

/// Writes as above into an existing file where it lies, which is several times as fast for a small file. A
/// write that fails in the middle leaves the file empty, and one that is interrupted leaves a part: only for
/// copies that can be made again. A file that does not exist is created.
ErrorCode OverwriteFile(std::string_view path, const std::function<bool(const PutPiece&)>& produce);

/// The long form of a path, which is the path itself on a platform without short names. Empty if the path
/// leads to nothing.
std::string LongPath(std::string_view path);

/// The path relative to the current folder made absolute, in system notation. A path that is absolute in
/// system notation does not change. Empty gives empty, and so does a native path without system notation.
std::string AbsolutePath(std::string_view path);

}  // namespace ventrix::platform
