// File operations that the standard library lacks. Paths are native; links at their end are not followed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace ventrix::platform {

enum class EntryKind { kFile, kFolder, kOther };  ///< Links, pipes and devices are kOther.

struct EntryStatus {
    EntryKind kind = EntryKind::kOther;
    std::uint64_t size = 0;     ///< Bytes; of a link, of the path in it.
    std::int64_t modified = 0;  ///< Nanoseconds since 1970, UTC.
};

/// The status of the entry itself. Nothing, with an error, if it cannot be examined; nothing, without an
/// error, if it does not exist.
std::optional<EntryStatus> StatusOfEntry(const std::filesystem::path& path, std::error_code& error);
std::optional<EntryStatus> StatusOfEntry(const std::filesystem::path& path);

/// Reads a regular file whole; links are followed. errc::is_a_directory for a folder, errc::not_supported for
/// a pipe or a device, which is not opened, errc::file_too_large for more than `limit` bytes. On failure
/// `content` is empty.
std::error_code ReadRegularFile(const std::filesystem::path& file, std::uint64_t limit, std::string& content);

/// Renames a file or folder on the same file system, in one step. Never replaces anything: errc::file_exists
/// if the new name is taken, also by an empty folder. On failure nothing has changed.
std::error_code RenameToFree(const std::filesystem::path& from, const std::filesystem::path& to);

/// Writes a small file as a whole, replacing an existing one. The content survives a crash of the machine
/// once this has returned; on failure the file is as it was, and no temporary file is left.
std::error_code WriteDurably(const std::filesystem::path& file, std::string_view content);

/// Writes a file that does not exist yet: errc::file_exists even for one that appears at this moment. On
/// failure no file is left behind.
std::error_code WriteNewFile(const std::filesystem::path& file, std::string_view content);

/// Copies a file and replaces an existing one. On Windows, the standard library's own function takes all
/// files for the same one.
std::error_code CopyReplacing(const std::filesystem::path& from, const std::filesystem::path& to);

/// Whether this process may create and delete entries in the folder.
bool IsWritableFolder(const std::filesystem::path& folder);

/// Gives `to` the owner and the group of `from`, as far as this process is permitted to.
void CopyOwner(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace ventrix::platform
