// Runs a stylesheet through the host's client for transformations. The pipeline transforms documents with it,
// the document pass repairs a DOCTYPE with it.
#pragma once

#include "fileset/path_classification.h"

namespace ventrix {

/// Has the client transform the file and waits until it has finished. An empty output path means the file's
/// own path with the extension ".html". Failure is not reported: the output is there afterwards or it is not.
void RunXsltScenario(Path file, Path stylesheet, Path outputPath);

}  // namespace ventrix
