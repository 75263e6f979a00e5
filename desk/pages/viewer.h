// Adds the viewer of the carried data to pages: data/ventrix.js with its style sheet. Strings are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/pages/page_map.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

inline constexpr const char* kViewerFiles[] = {"ventrix.js", "ventrix.css"};

struct ViewerSettings {
    NativePath data;        ///< The folder with ventrix.js and ventrix.css.
    NativePath document;    ///< What the paths that the viewer shows are relative to.
    std::string tags;       ///< The tags attribute.
    std::string xpath;      ///< The attribute with the XPaths, empty if they are among the tags.
    NativePath editorRoot;  ///< Where an editor finds the sources; empty for pages without links to one.
};

/// Copies the viewer into the folder. False, with a finding, if it cannot be written.
bool CopyViewer(const NativePath& folder, const ViewerSettings& settings, std::vector<Finding>& findings);

/// Adds the viewer in the folder to a page: two elements at the end of its head, and the places of its
/// elements at the end of its body. Nothing else of the page changes. A page that is not XML is left as it
/// is. One that cannot be written or has no head is a finding.
void AddViewer(const MappedPage& page, const NativePath& folder, const ViewerSettings& settings,
               std::vector<Finding>& findings);

}  // namespace ventrix::desk
