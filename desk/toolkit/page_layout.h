// Where the pages of a DITA publication lie: the folders of the sources, from their common folder on. Native
// paths.
#pragma once

#include <string>

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct PageLayout {
    NativePath sourceBase;  ///< The common folder of all files of the document, with its closing slash.
    NativePath outputBase;  ///< Where that folder's pages go, with a closing slash.
};

/// The layout of the document and all local files that it refers to.
PageLayout LayoutOf(const NativePath& document, const NativePath& outputBase);

/// Where a file is copied to; empty if it does not lie below the common folder.
NativePath OutputOf(const PageLayout& layout, const NativePath& source);

/// The page of a topic: its place with ".html" for its extension; empty as above.
NativePath PageOf(const PageLayout& layout, const NativePath& topic);

/// A URI reference from one page to another output file.
std::string RelativeReference(const NativePath& fromPage, const NativePath& toFile);

}  // namespace ventrix::desk
