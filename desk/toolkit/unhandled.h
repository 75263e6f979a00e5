// The constructs of DITA that the built-in toolkit does not handle.
#pragma once

#include "desk/toolkit/dita_document.h"

namespace ventrix::desk {

/// Reports each place of the document where its result will differ from what DITA describes, so that the user
/// can use the DITA Open Toolkit instead. Call it when reused content is in its place, and before keys and
/// links are resolved.
void ReportUnhandled(xmlDoc* document, const RemarkSink& remarks);

}  // namespace ventrix::desk
