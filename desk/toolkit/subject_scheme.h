// The subject schemes of a DITA map: which values of an attribute are kinds of which others. Strings are
// UTF-8.
#pragma once

#include "desk/toolkit/ditaval.h"

namespace ventrix::desk {

/// Reads the schemes among the map and the maps that it refers to, whatever a filter excludes, because the
/// filter depends on them. Maps that cannot be read are skipped; they are reported when they are published.
SubjectScheme ReadSubjectScheme(const NativePath& map);

}  // namespace ventrix::desk
