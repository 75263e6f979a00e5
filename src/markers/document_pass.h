// A document pass: loads one file, rewrites it in one direction and saves it over itself. Encoding writes
// what a transformation would lose into the text as marker text; decoding turns the marker text of its output
// back. Everything runs on the caller's thread, one pass at a time. All texts are UTF-8.
#pragma once

#include <memory>
#include <string>

#include "markers/publish_params.h"
#include "markers/xml/dom.h"

namespace ventrix {

/// Runs one pass over the file. True if the file could be loaded; it has then been worked on and saved.
/// False leaves the parser's reason in `errorText`, if a parser ran; the file is then unchanged, unless its
/// DOCTYPE was repaired on the way. `record.currentFile` keeps the path; `record.addSourcePath` comes back as
/// it was.
bool ProcessXmlFile(std::string path, bool decode, PublishParams& record, std::string& errorText);

/// The pass within an apartment. The document after the pass, or null if the file could not be loaded.
std::unique_ptr<xml::Document> ApplyMarkerPass(std::string path, bool decode, PublishParams& record,
                                               std::string& errorText);

/// Loads the file; null, with the last attempt's reason, on failure. An undefined entity has the DOCTYPE
/// repaired and the file loaded again, once without and once with its external DTD. `repaired` tells that the
/// repair has been tried. A later success does not clear an earlier reason.
std::unique_ptr<xml::Document> LoadXmlDocument(const std::string& path, std::string& errorText,
                                               bool resolveExternals, bool repaired);

/// Walks what is below the element, in document order, and codes it in one direction.
void CodeChildNodes(xml::Document& document, xml::Node element, bool decode, PublishParams& record);

}  // namespace ventrix
