// One run of a stylesheet, made by the host's client for transformations. It stands beside the marker passes,
// since they use it themselves when a document's DTD has to be recovered.
#pragma once

#include "fileset/path_classification.h"

namespace ventrix {

/// Asks the client to transform the file and waits for it. An empty output path stands for the file with the
/// extension ".html". What comes of the run is not looked at here: the output is there afterwards, or it is
/// not.
void RunXsltScenario(Path file, Path stylesheet, Path outputPath);

}  // namespace ventrix
