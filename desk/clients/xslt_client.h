// The client "QlXSLT": runs one stylesheet on one document, with EXSLT and without the network. DTDs and
// imported stylesheets come from local files and the XML catalogs.
#pragma once

#include "desk/clients/client.h"

namespace ventrix::desk {

/// A client for the command
///     XSLTRunTrScenario -dontuseqlconsole -file "IN" -xslfilepath "STYLESHEET" -outputfilepath "OUT"
/// with options in any order. OUT changes as a whole or, on failure, not at all; its folder is created if it
/// is missing. The stylesheet may read documents in the folders of IN, of OUT and of the stylesheets and
/// write files in the output folder. Messages of the stylesheet go to the host's console. A failure has
/// status 1, and the record gives the reason. The record and the file access must outlive the client.
Client MakeXsltClient(const FileAccess& access, TransformationRecord& record);

}  // namespace ventrix::desk
