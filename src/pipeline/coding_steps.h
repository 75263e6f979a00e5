// The two steps that carry a set of files through the document pass, one file at a time, with a line in the
// report log for each. A file that fails has a second line with the reason, stays as it is and stops nothing.
#pragma once

#include "fileset/path_classification.h"
#include "markers/publish_params.h"

namespace ventrix {

/// Encodes every XML file of the package; other files are passed over.
void EncodeFileSet(const FileList& packagedFiles, PublishParams& params, Path logFile);

/// Decodes every ".html" and ".htm" file below the folder.
void DecodeOutput(Path outputFolder, PublishParams& params, Path logFile);

}  // namespace ventrix
