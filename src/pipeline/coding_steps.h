// The two steps that run the document pass over a set of files, with a line in the report log for each file.
// For a file that fails a second line gives the reason. It stays unchanged, and the step continues.
#pragma once

#include "fileset/path_classification.h"
#include "markers/publish_params.h"

namespace ventrix {

/// Encodes every XML file of the package; other files are skipped.
void EncodeFileSet(const FileList& packagedFiles, PublishParams& params, Path logFile);

/// Decodes every ".html" and ".htm" file below the folder.
void DecodeOutput(Path outputFolder, PublishParams& params, Path logFile);

}  // namespace ventrix
