// The transformation with a DITA Open Toolkit that is installed on the machine: through its `dita` command,
// or through Ant for older versions, which have only a build file.
#pragma once

#include <string>

#include "desk/toolkit/builtin_toolkit.h"

namespace ventrix::desk {

/// `toolkit` is "installed" or a toolkit's folder; the program's output is appended to the log file. Empty on
/// success; else the reason, one line. The pages that a failed run wrote are delivered all the same.
std::string RunInstalledToolkit(const DitaRun& run, const std::string& toolkit, const NativePath& logFile);

}  // namespace ventrix::desk
