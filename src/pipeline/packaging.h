// Copies the referenced files of a document into the output folder and, at the end of a run, the graphics to
// their places relative to the result. Both use the reference cache. Paths are UTF-8 in system notation.
#pragma once

#include <cstdint>

#include "fileset/path_classification.h"

namespace ventrix {

constexpr int kPackageBuilt = 0;
constexpr int kPackageOnSeveralRoots = 8;  ///< The documents are on several roots.
constexpr int kPackageWithoutLog = 16;     ///< The log could not be opened.
constexpr int kPackageUnsafe = 32;         ///< The run could delete or rewrite source files.

/// Empties the output folder, which must end in a backslash, and copies the document's files into it, rebased
/// on their common folder. `packagedFiles` receives the target path of every file that was copied,
/// `packagedDocument` that of the document itself. Returns one of the values above; unless it is
/// kPackageBuilt, the output folder is unchanged.
int PackageFiles(std::uint32_t documentId, Path outputFolder, Path logFile, FileList& packagedFiles,
                 Path& packagedDocument);

/// Copies each graphic to its place relative to `folder`, which is the one that it has relative to the first
/// document of the cache. A file that is already there stays. Always returns 0.
int PlaceGraphics(std::uint32_t documentId, Path folder);

/// The path that a relative path names, starting at the folder. An absolute path is returned unchanged. Empty
/// if no path can be formed.
Path ResolveInFolder(const Path& folder, const Path& relativePath);

}  // namespace ventrix
