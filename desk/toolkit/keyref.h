// The text and the targets that keys are defined as (keyref).
#pragma once

#include "desk/toolkit/dita_library.h"

namespace ventrix::desk {

/// Gives elements with a `keyref` the key's reference, and the key's text if they are empty. A key that the
/// map does not define, or that leaves an element without both, is reported as a remark.
void ResolveKeyrefs(xmlDoc* document, const DitaKeys& keys, DitaLibrary& library, const RemarkSink& remarks);

}  // namespace ventrix::desk
