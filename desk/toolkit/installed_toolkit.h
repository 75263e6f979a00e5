// The transformation with a DITA Open Toolkit that is installed on the machine: a `dita` command, or a build
// file for Ant as older toolkits have it. Paths are native.
#pragma once

#include <string>

#include "desk/toolkit/builtin_toolkit.h"

namespace ventrix::desk {

/// `toolkit` is "installed" or a toolkit's folder; the program's output goes to the log file. Empty after a
/// success; else the reason, one line. What a failed run wrote is handed over all the same.
std::string RunInstalledToolkit(const DitaRun& run, const std::string& toolkit, const NativePath& logFile);

}  // namespace ventrix::desk
