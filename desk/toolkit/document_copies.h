// The document of a run that transforms copies of the sources.
#pragma once

#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct DocumentCopies {
    std::vector<NativePath> files;  ///< With the document. Some may not exist. Empty if they are not known.
    NativePath originals;  ///< The folder that was copied, with its closing slash; empty if none was.
    NativePath folder;     ///< Its copy, with its closing slash.
};

/// The copy of a source; other files are returned as they are.
NativePath CopyOf(const DocumentCopies& copies, const NativePath& file);

}  // namespace ventrix::desk
