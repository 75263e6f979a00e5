// The steps of a run that happen outside the module: the DITA Open Toolkit and the caller's scripts. Both
// block until the other side has finished, without a time limit, and neither reports failure: the steps that
// follow work on the files that exist.
#pragma once

#include "fileset/path_classification.h"

namespace ventrix {

/// Has the host's client "Dita OT" turn the packaged document into XHTML pages: opens the packaged copy in
/// the host, calls the client with one command line and closes the copy again. `ditaval` and `outputPath` may
/// be empty; `outputPath` is passed on unchanged. If the host does not open the copy, nothing is called or
/// logged.
void RunDitaOt(Path documentPath, Path ditaval, Path logFile, Path outputPath);

/// Starts `"script" "document"` with its window hidden and waits until it ends. The exit code is not read. A
/// script that cannot be started gives one line on the standard output of the process.
void RunScript(Path script, const Path& documentPath);

}  // namespace ventrix
