// The client "Dita OT": transforms an open DITA map or topic into XHTML pages, with our own stylesheet or
// with the DITA Open Toolkit.
#pragma once

#include "desk/clients/client.h"

namespace ventrix::desk {

struct DitaOtSettings {
    std::string toolkit =
        "builtin";          ///< "builtin", "installed" (found on this machine), or a toolkit's folder.
    NativePath dataFolder;  ///< Contains dita-to-xhtml.xsl.
};

/// A client for the command
///     Save -docId N -transtype xhtml [-filter "DITAVAL"] -outFilePath "OUT"
/// with options in any order. The pages go to the folder "xhtml" in OUT and the log to "buildlog-xhtml.txt"
/// beside it, on failure too. A failure has status 1, and the record gives the reason. The record and the
/// file access must outlive the client.
Client MakeDitaOtClient(DitaOtSettings settings, const FileAccess& access, TransformationRecord& record);

}  // namespace ventrix::desk
