// Files and folders by path in system notation, with the behaviour of NTFS where a caller can tell.
// Nothing stays open between calls. Paths and names are UTF-8; paths of any length that the machine takes are
// served.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/error_codes.h"
#include "platform/memory.h"

namespace ventrix::platform {

inline constexpr std::uint32_t kAttributeReadOnly =
    0x01;  ///< A file that its owner may not write; never a folder.
inline constexpr std::uint32_t kAttributeDirectory = 0x10;  ///< A folder, or a link that leads to one.
inline constexpr std::uint32_t kAttributeLink = 0x400;      ///< The entry itself is a link (reparse point).

inline constexpr std::size_t kPathLimit =
    4096;  ///< Units of a path buffer with its terminator, for callers' buffers.

struct FolderEntry {
    std::string name;          ///< The long name, without folder.
    std::uint32_t attributes;  ///< The bits above; others are 0.
};

/// The entries of a folder in the order in which NTFS delivers them: names compared in UTF-16, upper-cased,
/// without regard to language; names that differ in case only are ordered by their units. "." and ".." are
/// left out. A link that leads nowhere counts as a file. A name that is no UTF-8 is given as the bytes that
/// it is, so that the file can be reached; a name with a backslash is left out, since in system notation it
/// would name another file. A folder that is missing or cannot be read gives the empty list. The path may end
/// in separators.
std::vector<FolderEntry> ListFolder(std::string_view folder);

/// The attributes of what the path leads to; attributeLink only for a path that is itself a link. Nothing if
/// there is no such file or folder.
std::optional<std::uint32_t> AttributesOf(std::string_view path);

/// Sets or clears the read-only bit of a file; all other bits are ignored. Folders stay as they are.
ErrorCode SetAttributes(std::string_view path, std::uint32_t attributes);

/// Creates one folder. errorAlreadyExists if a file or folder has the name, errorPathNotFound if its parent
/// is missing.
ErrorCode MakeFolder(std::string_view path);

/// Removes an empty folder, or a link to a folder (never what it leads to). errorDirNotEmpty,
/// errorNotADirectory.
ErrorCode RemoveEmptyFolder(std::string_view path);

/// Deletes a file, or the link that the path names. A read-only file stays: errorAccessDenied, as for a
/// folder. So does one that a TextStream of this process has open: errorSharingViolation.
ErrorCode RemoveFile(std::string_view path);

/// Copies a file, permissions included, over an existing target. The target is never seen half-written: it
/// changes as a whole, or on failure not at all. A read-only target or a folder at either end is
/// errorAccessDenied, a copy onto itself errorSharingViolation. A target that is a link keeps being one; what
/// it leads to is replaced.
ErrorCode CopyFileOver(std::string_view source, std::string_view target);

/// True if the path leads to a file (no folder, no device) that this process may read now.
bool OpensForReading(std::string_view path);

/// Reads a file whole. On failure `content` stays as it was.
ErrorCode ReadWholeFile(std::string_view path, Bytes& content);
ErrorCode ReadWholeFile(std::string_view path, std::string& content);

/// Writes a file whole, creating it or replacing its content and keeping its permissions. The file changes as
/// a whole, or on failure not at all. A read-only file or a folder is errorAccessDenied. A link keeps being
/// one.
ErrorCode WriteWholeFile(std::string_view path, std::string_view content);

/// Takes one piece of a file's content; false if it could not be written, after which no more need come.
using PutPiece = std::function<bool(std::string_view piece)>;

/// The same for content that comes in pieces: `produce` is called once and hands them over one by one. False
/// from it is an error and leaves the file as it was.
ErrorCode WriteWholeFile(std::string_view path, const std::function<bool(const PutPiece&)>& produce);

/// The path in its long form, which where names have one form only is the path itself. Empty if nothing has
/// that name.
std::string LongPath(std::string_view path);

/// The current folder in system notation, without a closing backslash except for a root. Empty if it cannot
/// be told.
std::string CurrentFolder();

/// The path made absolute against the current folder, in system notation. A path that is absolute in system
/// notation comes back unchanged; empty gives empty; empty too for a native path that system notation cannot
/// tell.
std::string AbsolutePath(std::string_view path);

}  // namespace ventrix::platform
