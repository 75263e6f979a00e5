// A record that owns one resolved path, and the two things that the pipeline does with paths: join and
// relate. Texts are in the kit's current encoding, paths in the notation with backslashes. A path holds at
// most 4095 bytes.
#pragma once

#include <cstdint>
#include <string>

namespace ventrix {

/// Bytes of the buffers in which path texts are worked on, the terminator included.
constexpr std::uint32_t kPathBufferSize = 4096;

/// One resolved path, in kit memory.
struct FilePath {
    std::uint32_t magic;  ///< kFilePathMagic
    std::uint16_t flags;  ///< kPathNotQualified, kPathResolved
    char* text;           ///< Native notation, owned.
};

constexpr std::uint32_t kFilePathMagic = 0x70617468;
constexpr std::uint16_t kPathNotQualified = 1;
constexpr std::uint16_t kPathResolved = 16;

/// How a path is read or written.
enum Q_PathMode : int {
    kNativePath = 0,
    kPortablePath = 1,  ///< Tokens, see portable_path.h.
    kSlashPath = 2,     ///< Native, with forward slashes.
    kPlainPath = 4,     ///< As kNativePath.
};

/// The text as a record, joined to the anchor's path if it is relative and the anchor is not null. The caller
/// frees it with Q_FreeFilePath. Null for a null or empty text, an empty outcome, a text of more than 4095
/// bytes, a portable text that can't be read, mode 3, and when memory runs out. Other modes than those above
/// are fatal.
FilePath* Q_PathToFilePath(const char* text, const FilePath* anchor, int mode);

/// The path's text in the mode's notation, in kit memory. Null, with Q_ApiLastError -43, for a null path or
/// an unknown mode.
char* Q_FilePathToPath(const FilePath* path, int mode);

/// Frees the record; null is allowed. Always 0.
int Q_FreeFilePath(FilePath* path);

/// Both of "\\" and "/" separate components.
constexpr bool Q_IsSeparator(char byte) {
    return byte == '\\' || byte == '/';
}

/// Behind the last backslash or colon of the text; the text itself if it has neither. Null for null.
const char* Q_LeafOf(const char* text);

/// Whether the text begins with "dctm://". False for null.
bool Q_IsDctmPath(const char* text);

/// Whether the text begins as a full path: a drive, a separator, a network file or a document-store path.
bool Q_IsAbsolutePath(const char* text);

/// The path that the relative path names, seen from the folder; an absolute one comes back normalised. The
/// empty text stands for a path that could not be formed.
std::string JoinPath(const std::string& folder, const std::string& relativePath);

/// The path rewritten relative to the folder of the base; the path itself if the two share no root. Texts of
/// more than 4094 bytes are cut there.
std::string RelativeTo(std::string path, std::string base);

}  // namespace ventrix
