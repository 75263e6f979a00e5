// The transformation with a DITA Open Toolkit that is installed on the machine: through its `dita` command,
// or through Ant for older versions, which have only a build file.
#pragma once

#include <string>

#include "desk/toolkit/dita_run.h"

namespace ventrix::desk {

/// Why this toolkit cannot be run, one line that says what to do; empty if it is found.
std::string ToolkitProblem(const std::string& toolkit);

/// The toolkit and its location, in words: the choice between several installed toolkits is always reported.
/// `toolkit` may also be "builtin".
std::string DescribeToolkit(const std::string& toolkit);

/// Whether the file is a project file of the DITA Open Toolkit, in XML, JSON or YAML. It lists publications
/// and is not a document.
bool IsToolkitProject(const NativePath& file);

/// `toolkit` is "installed", a toolkit's folder or its `dita` command; the program's output is appended to
/// the log file. Empty on success; else the reason, one line. Errors that the toolkit reports are findings,
/// also after a success, and so is a filter that it seems not to have read. The pages that a failed run wrote
/// are delivered anyway.
std::string RunInstalledToolkit(const DitaRun& run, const std::string& toolkit, const NativePath& logFile);

}  // namespace ventrix::desk
