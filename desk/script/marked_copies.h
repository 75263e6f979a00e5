// Copies of the files with marker text in the folder of a run, taken at two moments, from which the loss
// report is counted: the sources when the transformation begins, and its result when it has ended. The module
// deletes the first and decodes the second. Paths are native.
#pragma once

#include <string>

namespace ventrix::desk {

/// Where the copies of one run are, in the private folder of the run.
struct MarkedFolders {
    std::string sources, result;
};

MarkedFolders MarkedFoldersIn(const std::string& runFolder);

/// Copies the XML files of the package, unless that was done before.
void CopySources(const std::string& package, const MarkedFolders& folders);

/// Copies the files with marker text in the package folder, apart from the sources, instead of earlier
/// copies.
void CopyResult(const std::string& package, const MarkedFolders& folders);

/// Whether both copies are complete.
bool AreCopied(const MarkedFolders& folders);

}  // namespace ventrix::desk
