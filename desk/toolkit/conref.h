// Content that is reused from other topics (conref, conkeyref).
#pragma once

#include "desk/toolkit/dita_library.h"

namespace ventrix::desk {

/// Replaces each element that has a `conref` or `conkeyref` with a copy of its target, or of its target and
/// the elements up to that of `conrefend`, in which further ones are replaced too. An element whose target
/// cannot be found is kept, and reported as a remark. Null for keys that are not known yet: only `conref`
/// counts.
void ResolveConrefs(xmlDoc* document, const DitaKeys* keys, DitaLibrary& library, const RemarkSink& remarks);

}  // namespace ventrix::desk
