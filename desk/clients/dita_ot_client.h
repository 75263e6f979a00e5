// The client "Dita OT": turns an open DITA map or topic into XHTML pages, with our own stylesheet or with the
// DITA Open Toolkit. Texts are UTF-8; settings hold native paths.
#pragma once

#include "desk/clients/client.h"

namespace ventrix::desk {

struct DitaOtSettings {
    std::string toolkit =
        "builtin";          ///< "builtin", "installed" (found on this machine), or a toolkit's folder.
    NativePath dataFolder;  ///< The folder that holds dita-to-xhtml.xsl.
};

/// A client that understands
///     Save -docId N -transtype xhtml [-filter "DITAVAL"] -outFilePath "OUT"
/// with options in any order. Pages land in the folder "xhtml" below OUT and the log in "buildlog-xhtml.txt"
/// beside it, the log on failure too. A failure has status 1, and the record, which must outlive the client,
/// names its reason.
Client MakeDitaOtClient(DitaOtSettings settings, TransformationRecord& record);

}  // namespace ventrix::desk
