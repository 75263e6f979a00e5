// Has the host's client "Dita OT" turn the packaged document into XHTML pages.
#pragma once

#include "fileset/path_classification.h"

namespace ventrix {

/// Opens the packaged copy in the host, calls the client with one command line and closes the copy again.
/// `ditaval` and `outputPath` may be empty; `outputPath` is handed on as it is. A copy that the host does not
/// open ends the step without a trace; a client that fails is not noticed.
void RunDitaOt(Path documentPath, Path ditaval, Path logFile, Path outputPath);

}  // namespace ventrix
