// Adds the viewer of the carried data to pages: data/ventrix.js with its style sheet. Strings are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/pages/page_map.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

struct ViewerSettings {
    NativePath data;        ///< The folder with ventrix.js and ventrix.css.
    NativePath document;    ///< What the paths that the viewer shows are relative to.
    std::string tags;       ///< The tags attribute.
    std::string xpath;      ///< The attribute with the XPaths, empty if they are among the tags.
    NativePath editorRoot;  ///< Where an editor finds the sources; empty for pages without links to one.
};

/// Copies the viewer into the folder and adds it to each page that is XML: two elements at the end of its
/// head, and the places of its elements at the end of its body. Nothing else of a page changes. Files that
/// cannot be written, and pages without a head, are findings.
void AddViewer(const std::vector<MappedPage>& pages, const NativePath& folder, const ViewerSettings& settings,
               std::vector<Finding>& findings);

}  // namespace ventrix::desk
