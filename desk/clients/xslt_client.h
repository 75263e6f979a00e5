// The client "QlXSLT": runs one stylesheet over one document, with EXSLT and without any network. DTDs and
// stylesheet parts come from local files and the XML catalogs. Texts are UTF-8; settings hold native paths.
#pragma once

#include "desk/clients/client.h"

namespace ventrix::desk {

/// A client that understands
///     XSLTRunTrScenario -dontuseqlconsole -file "IN" -xslfilepath "STYLESHEET" -outputfilepath "OUT"
/// with options in any order. OUT changes as a whole or, on failure, not at all; its folder is created where
/// it is missing. Messages of the stylesheet go to the host's console. A failure has status 1, and the
/// record, which must outlive the client, names its reason.
Client MakeXsltClient(TransformationRecord& record);

}  // namespace ventrix::desk
