// Open files by handle, for the stream object of the kit. A handle fits 32 bits, sign included; 0 is no file.
// Whoever opens a handle closes it. Files are shared for reading and writing with everybody.
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

/// Opens a file by its path (UTF-8, system notation), position 0. 0 if that fails, also for a folder or a
/// device. Shows nothing to the user.
FileHandle OpenFileHandle(std::string_view path, FileAccess access, FileDisposition disposition);

/// Reads up to `count` bytes. Gives the number read, fewer only at the end of the file or after an error; 0
/// for no file.
std::uint32_t ReadFromHandle(FileHandle file, void* buffer, std::uint32_t count);

/// Writes `count` bytes. Gives the number written, fewer only after an error; 0 for no file.
std::uint32_t WriteToHandle(FileHandle file, const void* bytes, std::uint32_t count);

/// Moves the position and gives the new one. Nothing for a position before the beginning or for no file.
std::optional<std::uint64_t> SeekHandle(FileHandle file, std::int64_t offset, SeekOrigin origin);

/// The file's size in bytes. Nothing for no file.
std::optional<std::uint64_t> SizeOfHandle(FileHandle file);

/// Closes a file; 0 is passed over.
void CloseFileHandle(FileHandle file);

}  // namespace ventrix::platform
