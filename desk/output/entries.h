// The entries of a folder: listed, opened for writing, moved to a free name. Paths are native; links are
// never followed.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace ventrix::desk {

/// The names in a folder, sorted by their bytes. On an error the list is incomplete.
std::vector<std::filesystem::path> NamesIn(const std::filesystem::path& folder, std::error_code& error);

/// The same; an error becomes a finding that names the folder.
std::vector<std::filesystem::path> NamesIn(const std::filesystem::path& folder,
                                           std::vector<std::string>& findings);

/// Whether an entry with this path exists; a link that leads nowhere counts.
bool Exists(const std::filesystem::path& path);

/// Whether the path names a folder; a link to a folder does not count.
bool IsFolder(const std::filesystem::path& path);

/// The permissions of a folder, none if it does not exist.
std::filesystem::perms ModeOf(const std::filesystem::path& folder);
void SetMode(const std::filesystem::path& folder, std::filesystem::perms mode);

/// Lets the owner list and change the folder, if this process may change its permissions.
void MakeWritable(const std::filesystem::path& folder);

/// Moves a file or folder into `folder` as `name` with `suffix`, and a number from 2 on if that name is taken
/// there or beside `from`, whose neighbours may be moved next. A name that would become too long is
/// shortened. Reports the new path; empty with an error if it stays where it is.
std::filesystem::path MoveToFreeName(const std::filesystem::path& from, const std::filesystem::path& folder,
                                     const std::string& name, const std::string& suffix,
                                     std::error_code& error);

/// `name` + `suffix`, with `.number` from 2 on, in at most 255 bytes: the name is cut between two characters.
std::string NumberedName(const std::string& name, const std::string& suffix, int number);

/// Removes the empty folders below a folder, and those that become empty by it; the folder itself stays.
void RemoveEmptyFolders(const std::filesystem::path& folder);

}  // namespace ventrix::desk
