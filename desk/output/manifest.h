// The manifest of a result: the files and folders that a run made, by which the desk host later distinguishes
// its own files from the user's. It is a JSON file in the folder that it describes. Paths are native; names
// in a manifest are relative, with slashes, UTF-8.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <system_error>
#include <vector>

namespace ventrix::desk {

inline constexpr const char* kResultMark = ".ventrix-result";  ///< Manifest of a result.
inline constexpr const char* kFailedMark = ".ventrix-failed";  ///< Manifest of what a failed run made.

struct FileStamp {
    std::uint64_t size = 0;     ///< Bytes.
    std::int64_t modified = 0;  ///< Nanoseconds since 1970.

    bool operator==(const FileStamp&) const = default;
};

struct Manifest {
    bool readable = false;  ///< It was read from a file that holds one.
    std::string mark;       ///< Name of the manifest's own file.
    std::string request;    ///< The request of the run.
    std::string version;    ///< Of the program that made the result.
    std::map<std::string, FileStamp> files;
    std::set<std::string> folders;
};

/// Reads the manifest `mark` in a folder. Where there is none, or the file is damaged, of an unknown schema
/// or not a regular file, the manifest lists nothing and is not `readable`: no entry of the folder then
/// counts as created by a run. The list contains the manifest's own file, even an empty one, since deleting
/// that loses nothing.
Manifest ReadManifest(const std::filesystem::path& folder, const std::string& mark);

/// Writes the manifest durably into the folder. On failure an earlier one is as it was.
std::error_code WriteManifest(const std::filesystem::path& folder, const Manifest& manifest);

/// Adds what the folder holds now to the manifest; its own file and `lost+found` are left out. What cannot be
/// read is not listed, so that it counts as foreign; the findings name it.
void ListFiles(const std::filesystem::path& folder, Manifest& manifest, std::vector<std::string>& findings);

/// Whether the manifest lists this entry of the folder, and it has neither been edited nor replaced since.
/// `name` is the path below the folder.
bool IsUnmodified(const Manifest& manifest, const std::filesystem::path& folder,
                  const std::filesystem::path& name);

/// Whether the manifest lists a file of this name.
bool ListsFile(const Manifest& manifest, const std::filesystem::path& name);
bool ListsFolder(const Manifest& manifest, const std::filesystem::path& name);

}  // namespace ventrix::desk
