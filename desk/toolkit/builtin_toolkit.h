// Transforms a DITA map or topic with our own stylesheet: one XHTML page for each topic, an index for a map,
// and copies of graphics and other local files in the corresponding folders. Memory holds one topic at a time
// and a few that it refers to. Strings are UTF-8.
#pragma once

#include <string>

#include "desk/toolkit/dita_run.h"

namespace ventrix::desk {

/// Empty on success, with or without warnings; else the reason, one line.
std::string RunBuiltinToolkit(const DitaRun& run, const NativePath& stylesheetPath);

}  // namespace ventrix::desk
