// Runs a caller's program on the packaged document.
#pragma once

#include "fileset/path_classification.h"

namespace ventrix {

/// Starts `"script" "document"` with its window hidden and waits for its end, without a limit. The exit code
/// is not read; a program that can't be started gives one line on the standard output of the process.
void RunScript(Path script, const Path& documentPath);

}  // namespace ventrix
