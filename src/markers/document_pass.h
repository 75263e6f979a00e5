// A document pass: loads one file, rewrites it in one direction and saves it over itself. Encoding writes
// what a transformation would lose into the text, as marker text; decoding turns the marker text of its
// output into attributes and elements again. A pass runs on the caller's thread, one pass at a time. Strings
// are UTF-8, paths in system notation.
#pragma once

#include <memory>
#include <string>

#include "markers/publish_params.h"
#include "markers/xml/dom.h"

namespace ventrix {

/// Runs one pass over the file, which `params.currentFile` names from then on. True if the file could be
/// loaded, even if saving it failed. False leaves the parser's reason in `errorText`, if a parser ran; the
/// file is then unchanged, unless its DOCTYPE was repaired.
bool ProcessXmlFile(std::string path, bool decode, PublishParams& params, std::string& errorText);

/// The pass itself, with the component model initialised and `params.currentFile` set. Returns the document
/// as saved, or null if the file could not be loaded.
std::unique_ptr<xml::Document> ApplyMarkerPass(std::string path, bool decode, const PublishParams& params,
                                               std::string& errorText);

/// Loads the file. Returns null on failure, with the reason of the last attempt in `errorText`; a later
/// success does not clear an earlier reason. After an undefined entity the DOCTYPE is repaired and the file
/// loaded again, at first without and then with its external DTD. `repaired` means that this has been done.
std::unique_ptr<xml::Document> LoadXmlDocument(const std::string& path, std::string& errorText,
                                               bool resolveExternals, bool repaired);

/// Walks the nodes below the element, in document order, and encodes or decodes each of them.
void CodeChildNodes(xml::Document& document, xml::Node element, bool decode, const PublishParams& params);

}  // namespace ventrix
