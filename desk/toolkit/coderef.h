// The lines of code samples (coderef).
#pragma once

#include "desk/toolkit/dita_document.h"

namespace ventrix::desk {

/// Replaces each `coderef` with the lines of its file. A file that cannot be read is reported as a remark.
void ResolveCoderefs(xmlDoc* document, const RemarkSink& remarks);

}  // namespace ventrix::desk
