// Where the pages of a DITA publication lie: the folders of the sources, from their common folder on. Native
// paths.
#pragma once

#include <string>

namespace ventrix::desk {

struct PageLayout {
    std::string sourceBase;  ///< The common folder of all files of the document, with its closing slash.
    std::string outputBase;  ///< Where that folder's pages go, with a closing slash.
};

/// The layout of the document and all local files that it refers to.
PageLayout LayoutOf(const std::string& document, const std::string& outputBase);

/// Where a file is copied to; empty if it does not lie below the common folder.
std::string OutputOf(const PageLayout& layout, const std::string& source);

/// The page of a topic: its place with ".html" for its extension; empty as above.
std::string PageOf(const PageLayout& layout, const std::string& topic);

/// A URI reference from one page to another output file.
std::string RelativeReference(const std::string& fromPage, const std::string& toFile);

}  // namespace ventrix::desk
