// The client "Dita OT": transforms an open DITA map or topic into XHTML pages, with our own stylesheet or
// with the DITA Open Toolkit.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "desk/clients/client.h"

namespace ventrix::desk {

struct DitaOtSettings {
    /// "builtin", "installed" (found on this machine), or a toolkit's folder or command.
    std::string toolkit = "builtin";
    NativePath dataFolder;  ///< Contains dita-to-xhtml.xsl and pages.css.

    // The rest is what a command of the module can't say.
    std::vector<NativePath> filters = {};    ///< Instead of the command's; may be empty.
    std::string transtype = {};              ///< Instead of the command's; may be empty.
    std::vector<NativePath> resources = {};  ///< Maps that define keys.
    std::vector<std::pair<std::string, std::string>> parameters = {};  ///< Of the toolkit, by name.
    PageDesign design = {};                                            ///< Of the built-in toolkit's pages.
    DocumentCopies copies = {};                                        ///< What the package holds.
};

/// A client for the command
///     Save -docId N -transtype xhtml [-filter "DITAVAL"] -outFilePath "OUT"
/// with options in any order. The pages go to the folder "xhtml" in OUT and the log to "buildlog-xhtml.txt"
/// beside it, on failure too. A failure has status 1, and the record gives the reason. The settings, which
/// may change before the command comes, the record and the file access must outlive the client.
Client MakeDitaOtClient(const DitaOtSettings& settings, const FileAccess& access,
                        TransformationRecord& record);

}  // namespace ventrix::desk
