// Pieces of marker text that readers see: a transformation cut a text in the middle of its marker text, or
// changed the letters of it, so that it is not decoded and stays in the text of a page. Strings are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// What pages may contain without the module.
struct OwnText {
    std::vector<NativePath> files;   ///< Their contents; files that are not text are skipped.
    std::vector<std::string> texts;  ///< Such as paths, titles and parameters.
};

/// The first piece in the text of a page.
struct VisibleMarker {
    NativePath page;
    int line = 0, column = 0;  ///< The column in characters, from 1; 0 if unknown.
    std::string excerpt;       ///< The words around it, one line.
};

/// One for each page that has a piece. Looks at the text of the pages, not at their attributes, comments,
/// scripts and styles. A piece is a marker word in any case, the beginning of one with its "_" where a word
/// of the text ends, or the end of one with its "_" where a text begins; shorter pieces could be anything.
/// What `own` has is not one. The files are read only if the pages have something that could be a piece.
std::vector<VisibleMarker> FindVisibleMarkers(const std::vector<NativePath>& pages, const OwnText& own);

}  // namespace ventrix::desk
