#include "desk/toolkit/document_copies.h"

namespace ventrix::desk {

NativePath CopyOf(const DocumentCopies& copies, const NativePath& file) {
    const std::string& originals = copies.originals.utf8;
    // The copies may lie below the originals.
    const bool isOriginal =
        !originals.empty() && file.utf8.starts_with(originals) && !file.utf8.starts_with(copies.folder.utf8);
    return isOriginal ? NativePath{copies.folder.utf8 + file.utf8.substr(originals.size())} : file;
}

}  // namespace ventrix::desk
