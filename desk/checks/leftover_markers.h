// Marker text that is left in a result. The module decodes the text of pages; what a transformation copied to
// other places, such as attribute values, comments, scripts and files that are no pages, keeps it.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

struct CleanedFiles {
    std::size_t groups = 0;         ///< Pieces of marker text that were taken out.
    std::set<NativePath> files;     ///< That have changed.
    std::vector<Finding> findings;  ///< Files that could not be read or written, and what was left.
};

/// Takes whole pieces of marker text out of the text files at the place, a folder with all below it or one
/// file. The words around them stay. Files that are not text are skipped. UTF-16 is text.
void CleanFiles(const NativePath& place, CleanedFiles& cleaned);

/// The first of the files that holds a marker word of its own, which cleaning would take for one of the
/// module's; empty if none does.
NativePath FirstWithMarkerWord(const std::vector<NativePath>& files);

}  // namespace ventrix::desk
