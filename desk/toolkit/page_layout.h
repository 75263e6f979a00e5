// Where the pages of a DITA publication go: the output repeats the folders of the sources below their common
// folder.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct PageLayout {
    NativePath sourceBase;   ///< The common folder of all files of the document, with its closing slash.
    NativePath outputBase;   ///< The folder in the output that corresponds to it, with its closing slash.
    NativePath assets = {};  ///< The folder of the output for style sheets, with its closing slash.
    std::map<NativePath, NativePath> pages = {};  ///< Those that are assigned, by topic.
    std::set<NativePath> taken = {};              ///< These pages, and other output files.
};

/// The layout for the document and all local files that it refers to, of which some may not exist. The style
/// sheets go to "ventrix-style" in the folder of the document, or with a number if the document has files in
/// such a folder.
PageLayout LayoutOf(const NativePath& document, const std::vector<NativePath>& files,
                    const NativePath& outputBase);

/// Where a file is copied to; empty if it is not in the common folder.
NativePath OutputOf(const PageLayout& layout, const NativePath& source);

/// Assigns a page to a topic: as above, with the extension ".html", and a number if another topic has this
/// page, as "a.dita" and "a.xml" would.
void AssignPage(PageLayout& layout, const NativePath& topic);

/// The page of a topic that was assigned one; empty if it is not in the common folder.
NativePath PageOf(const PageLayout& layout, const NativePath& topic);

/// The page, or one with a number after its name if a topic has it.
NativePath FreePage(const PageLayout& layout, const NativePath& page);

/// A URI reference from a page to another output file. Both paths are absolute and normal.
std::string RelativeReference(const NativePath& fromPage, const NativePath& toFile);

}  // namespace ventrix::desk
