// The folders that the text of a document may come from. Markup can name any file of the machine; only files
// in the document's area may become part of the published text.
#pragma once

#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// The deepest folder that contains the document and these files, which it refers to by relative references.
/// If that is the root, a top-level folder, or a folder that contains a user's home folder, it is the folder
/// of the document instead. Empty if that in turn is the root or contains a home folder: such a document
/// may use the files beside it, but none from folders below. Links on the way to the folder are resolved.
NativePath AreaOf(const NativePath& document, const std::vector<NativePath>& files);

}  // namespace ventrix::desk
