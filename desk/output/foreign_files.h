// Foreign files: the entries of a result folder that its manifest does not list, and those that it lists but
// that have been edited. They belong to the user. Paths are native; links are never followed.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "desk/output/manifest.h"

namespace ventrix::desk {

/// A foreign file or folder that has another name now.
struct KeptEntry {
    std::filesystem::path wanted;  ///< The name that it had, in the output folder.
    std::filesystem::path kept;    ///< Where it is.
    bool edited = false;           ///< The user edited this page; otherwise the new result took the name.
};

/// What the handling of an output folder has to report. Each finding is one line that names a file or folder.
struct OutputReport {
    std::string error;                   ///< Why the operation was not done; empty if it was.
    std::filesystem::path failedFolder;  ///< Where a failed run's files are; empty if it made none.
    std::vector<KeptEntry> kept;
    std::vector<std::string> findings;
};

/// The first foreign entry, as its path below the folder; nothing if every entry is listed and unmodified. A
/// folder that cannot be listed counts as foreign.
std::optional<std::filesystem::path> FirstForeign(const std::filesystem::path& folder,
                                                  const Manifest& manifest);

/// Moves the foreign entries of `earlier` to the same place in `result`, which exists on the same file
/// system. Nothing is replaced: an entry whose name is taken becomes `NAME.kept`, an edited page
/// `NAME.edited`, each with a number if that is taken too. What cannot be moved stays, and a finding names
/// it. May be called again on what is left.
void RestoreForeign(const std::filesystem::path& earlier, const std::filesystem::path& result,
                    const Manifest& manifest, OutputReport& report);

/// Deletes the listed, unmodified files of a folder, listed folders that are empty then, and, if only foreign
/// entries are left, the manifest. What could not be deleted is named in the findings. May be called again.
void DeleteOwn(const std::filesystem::path& folder, const Manifest& manifest,
               std::vector<std::string>& findings);

}  // namespace ventrix::desk
