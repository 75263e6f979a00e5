// Copies the referenced files of a document into the output folder, and at the end of a run puts the graphics
// to their places beside the result. Both work from the reference cache. Paths are UTF-8.
#pragma once

#include <cstdint>

#include "fileset/path_classification.h"

namespace ventrix {

constexpr int kPackageBuilt = 0;
constexpr int kPackageOnSeveralRoots = 8;  ///< The documents lie on several roots; nothing was touched.
constexpr int kPackageWithoutLog = 16;     ///< The log could not be opened; nothing was touched.
constexpr int kPackageUnsafe = 32;         ///< A run could lose or rewrite source files; nothing was touched.

/// Empties the output folder, which must end in a backslash, and copies the document's files into it, rebased
/// on their common folder. `packagedFiles` receives the target of every file that was copied,
/// `packagedDocument` that of the document itself. Returns one of the values above; on any but packageBuilt
/// the output folder is as it was.
int PackageFiles(std::uint32_t documentId, Path outputFolder, Path logFile, FileList& packagedFiles,
                 Path& packagedDocument);

/// Copies each graphic to the place below `folder` that it has relative to the document, unless a file is
/// there. Always 0.
int PlaceGraphics(std::uint32_t documentId, Path folder);

/// The path that a relative path names, seen from the folder; an absolute one comes back as it is. Empty
/// where no path could be formed.
Path ResolveInFolder(const Path& folder, const Path& relativePath);

}  // namespace ventrix
