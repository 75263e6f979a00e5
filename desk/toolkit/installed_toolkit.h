// The transformation with a DITA Open Toolkit that is installed on the machine: through its `dita` command,
// or through Ant for older versions, which have only a build file.
#pragma once

#include <string>
#include <vector>

#include "desk/toolkit/builtin_toolkit.h"

namespace ventrix::desk {

/// Why this toolkit cannot be run, one line that says what to do; empty if it is found.
std::string ToolkitProblem(const std::string& toolkit);

/// The toolkit and its location, in words: the choice between several installed toolkits is always reported.
/// `toolkit` may also be "builtin".
std::string DescribeToolkit(const std::string& toolkit);

/// The lines of a run's log in which the toolkit reports an error, without colour codes. Even a toolkit that
/// ends with success may have skipped topics.
std::vector<std::string> ToolkitErrors(const NativePath& logFile);

/// `toolkit` is "installed" or a toolkit's folder; the program's output is appended to the log file. Empty on
/// success; else the reason, one line. The pages that a failed run wrote are delivered anyway.
std::string RunInstalledToolkit(const DitaRun& run, const std::string& toolkit, const NativePath& logFile);

}  // namespace ventrix::desk
