// Where the pages of a DITA publication go: the output repeats the folders of the sources below their common
// folder.
#pragma once

#include <string>

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct PageLayout {
    NativePath sourceBase;  ///< The common folder of all files of the document, with its closing slash.
    NativePath outputBase;  ///< The folder in the output that corresponds to it, with its closing slash.
};

/// The layout for the document and all local files that it refers to.
PageLayout LayoutOf(const NativePath& document, const NativePath& outputBase);

/// Where a file is copied to; empty if it is not in the common folder.
NativePath OutputOf(const PageLayout& layout, const NativePath& source);

/// The page of a topic: as above, with the extension ".html".
NativePath PageOf(const PageLayout& layout, const NativePath& topic);

/// A URI reference from a page to another output file.
std::string RelativeReference(const NativePath& fromPage, const NativePath& toFile);

}  // namespace ventrix::desk
