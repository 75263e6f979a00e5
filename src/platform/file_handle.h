// Open files by handle, for the kit's stream object. A handle is positive; 0 means no file. Whoever opens a
// handle closes it. Other processes may read and write an open file.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace ventrix::platform {

using FileHandle = std::int32_t;

enum class FileAccess { kRead, kWrite, kReadWrite };

enum class FileDisposition {
    kOpenExisting,  ///< A missing file is a failure.
    kOpenAlways,    ///< A missing file is created; an existing one keeps its content.
    kCreateAlways,  ///< A missing file is created; an existing one is emptied.
};

enum class SeekOrigin : std::uint32_t { kBegin = 0, kCurrent = 1, kEnd = 2 };

/// Opens a file by its path (UTF-8, system notation) at position 0. 0 on failure, and for folders and
/// devices.
FileHandle OpenFileHandle(std::string_view path, FileAccess access, FileDisposition disposition);

/// Reads up to `count` bytes and returns the number read: fewer only at the end of the file or after an
/// error, 0 for no file.
std::uint32_t ReadFromHandle(FileHandle file, void* buffer, std::uint32_t count);

/// Writes `count` bytes and returns the number written: fewer only after an error, 0 for no file.
std::uint32_t WriteToHandle(FileHandle file, const void* bytes, std::uint32_t count);

/// Moves the position and returns the new one. Nothing for a position before the start and for no file.
std::optional<std::uint64_t> SeekHandle(FileHandle file, std::int64_t offset, SeekOrigin origin);

/// The file's size in bytes. Nothing for no file.
std::optional<std::uint64_t> SizeOfHandle(FileHandle file);

/// Closes a file; 0 is ignored.
void CloseFileHandle(FileHandle file);

}  // namespace ventrix::platform
