// A record that owns one resolved path, tests on path strings, and the two operations of the pipeline:
// joining paths and making one relative to another. Strings are in the kit's current encoding. Paths are in
// system notation, which the kit calls native as opposed to portable (portable_path.h), and hold at most 4095
// bytes.
#pragma once

#include <cstdint>
#include <string>

namespace ventrix {

/// The size in bytes, terminator included, of the buffers in which paths are changed in place.
constexpr std::uint32_t kPathBufferSize = 4096;

/// One resolved path, in kit memory.
struct FilePath {
    std::uint32_t magic;  ///< kFilePathMagic
    std::uint16_t flags;  ///< kPathNotQualified, kPathResolved
    char* text;           ///< In native notation, owned.
};

constexpr std::uint32_t kFilePathMagic = 0x70617468;
constexpr std::uint16_t kPathNotQualified = 1;
constexpr std::uint16_t kPathResolved = 16;

/// The notation in which a path is read or written.
enum Q_PathMode : int {
    kNativePath = 0,
    kPortablePath = 1,  ///< See portable_path.h.
    kSlashPath = 2,     ///< Native notation with forward slashes.
    kPlainPath = 4,     ///< The same as kNativePath.
};

/// Resolves a path, relative to the anchor's path if that is not null, into a new record, which the caller
/// frees with Q_FreeFilePath. Null for a null or empty string, a string of more than 4095 bytes, malformed
/// portable notation, an empty result, mode 3, and when memory runs out. Any other mode outside Q_PathMode is
/// fatal.
FilePath* Q_PathToFilePath(const char* text, const FilePath* anchor, int mode);

/// The path in the notation of the mode, in kit memory. Null for a null path or an unknown mode, both with
/// Q_ApiLastError -43, and for a path that has no portable form.
char* Q_FilePathToPath(const FilePath* path, int mode);

/// Frees the record; null is allowed. Always 0.
int Q_FreeFilePath(FilePath* path);

/// Components are separated by a backslash or a slash.
constexpr bool Q_IsSeparator(char byte) {
    return byte == '\\' || byte == '/';
}

/// The part after the last backslash or colon; the text itself if it has neither. Null for null.
const char* Q_LeafOf(const char* text);

/// Whether the text begins with "dctm://". False for null.
bool Q_IsDctmPath(const char* text);

/// Whether the text is an absolute path: its second byte is a colon, or it begins with a separator or
/// "dctm://", or it names a network file. False for null.
bool Q_IsAbsolutePath(const char* text);

/// Joins a folder and a relative path and normalises the result. An absolute path ignores the folder. Empty
/// if the path cannot be formed.
std::string JoinPath(const std::string& folder, const std::string& relativePath);

/// The path rewritten relative to the folder of the base; the path itself if the two have no common root.
/// `path` is first cut to 4094 bytes.
std::string RelativeTo(std::string path, std::string base);

}  // namespace ventrix
