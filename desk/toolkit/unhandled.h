// The constructs of DITA that the built-in toolkit does not handle.
#pragma once

#include <libxml/tree.h>

#include "desk/toolkit/dita_run.h"

namespace ventrix::desk {

/// Reports each place of the document where its result will differ from what DITA describes, so that the user
/// can use the DITA Open Toolkit instead. Call it before references are resolved.
void ReportUnhandled(xmlDoc* document, const NativePath& file,
                     const std::function<void(const DitaFinding&)>& finding);

}  // namespace ventrix::desk
