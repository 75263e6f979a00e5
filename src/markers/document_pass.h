// A document pass: loads one file, rewrites it in one direction and saves it over itself. Encoding writes
// what a transformation would lose into the text as marker text; decoding turns the marker text of its output
// back. Everything runs on the caller's thread, one pass at a time. All texts are UTF-8.
#pragma once

#include <string>

#include "markers/publish_params.h"

namespace ventrix {

/// Runs one pass over the file. True if the file could be loaded; it has then been worked on and saved.
/// False leaves the parser's reason in `errorText`, if a parser ran; the file is then unchanged, unless its
/// DOCTYPE was repaired on the way. `record.currentFile` keeps the path; `record.addSourcePath` comes back as
/// it was.
bool ProcessXmlFile(std::string path, bool decode, PublishParams& record, std::string& errorText);

}  // namespace ventrix
