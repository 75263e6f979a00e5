// The DOCTYPE that the module adds to files of a package, so that their entities are known to it.
#pragma once

#include "desk/documents/document_files.h"
#include "desk/toolkit/document_copies.h"

namespace ventrix::desk {

/// Takes it out of the copies of external entities again, which may have none where another file refers to
/// them. A DOCTYPE of the source stays. What cannot be written is reported by the transformation, which
/// cannot read it.
void RemoveAddedDoctypes(const DocumentFiles& files, const DocumentCopies& copies);

}  // namespace ventrix::desk
