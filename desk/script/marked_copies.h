// The files with marker text in the folder of a run, at two moments, from which the loss report is counted:
// the sources when the transformation begins, and its result when it has ended. The module deletes the first
// and decodes the second, so the recorder of a script copies them. Paths are native.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace ventrix::desk {

/// The XML files below the folder, relative to it, by name: of a package, the sources.
std::vector<std::filesystem::path> XmlFilesBelow(const std::string& folder);

/// The files below the folder that may have marker text, apart from the sources.
std::vector<std::filesystem::path> MarkedFilesBelow(const std::string& folder,
                                                    const std::vector<std::filesystem::path>& sources);

/// Where the copies of one run are, in the private folder of the run.
struct MarkedFolders {
    std::string sources, result;
};

MarkedFolders MarkedFoldersIn(const std::string& runFolder);

/// Copies the sources of the package, unless that was done before.
void CopySources(const std::string& package, const MarkedFolders& folders);

/// Copies the files with marker text in the package folder, apart from the sources.
void CopyResult(const std::string& package, const MarkedFolders& folders);

/// Whether the copies in one of the folders are complete.
bool AreCopied(const std::string& folder);

}  // namespace ventrix::desk
