// XSLT stylesheets with libxslt, EXSLT and one extension element of this host. While a stylesheet is loaded
// or runs, the process does not use the network: DTDs, imported stylesheets and documents come from local
// files and the XML catalogs. Strings are UTF-8.
#pragma once

#include <libxslt/xsltInternals.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "desk/paths/paths.h"
#include "desk/xml/inclusions.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {

/// Receives a message of a stylesheet or of the parser: one line, without a line break.
using MessageSink = std::function<void(const std::string& line)>;

struct FreeStylesheet {
    void operator()(xsltStylesheet* stylesheet) const { xsltFreeStylesheet(stylesheet); }
};
using Stylesheet = std::unique_ptr<xsltStylesheet, FreeStylesheet>;

/// Null if the stylesheet is missing or has an error; the first message then gives the reason.
Stylesheet LoadStylesheet(const NativePath& path, const MessageSink& messages);

/// The stylesheet's own file and those that it imports and includes.
std::vector<NativePath> FilesOf(const xsltStylesheet* stylesheet);

struct LoadedDocument {
    XmlDocument document;  ///< Null, with a message, if the file is missing or not well-formed.
    std::vector<FailedInclusion> failedInclusions;
};

/// Loads a document for a stylesheet, with its XInclude elements replaced by what they include. An undeclared
/// entity is reported as a message and expands to nothing.
LoadedDocument LoadForStylesheet(const NativePath& path, const MessageSink& messages);

struct TransformJob {
    const Stylesheet& stylesheet;
    xmlDoc* document = nullptr;
    NativePath sourcePath;  ///< The document's file, for copy-document; may be empty.
    NativePath outputPath;  ///< What paths of further output files are relative to; may be empty.
    /// Further output files lie in this folder or below, wherever links lead; empty if there may be none. An
    /// attempt to write another file is reported and fails the transformation.
    NativePath outputFolder = {};
    std::map<std::string, std::string> parameters = {};   ///< String values by name, without XPath quotes.
    std::map<std::string, std::string> expressions = {};  ///< Values as XPath expressions, by name.
};

struct Transformed {
    bool done = false;         ///< False if the stylesheet failed or ended itself with a terminating message.
    std::string output = {};   ///< Serialised as `xsl:output` says, but HTML as XHTML; empty on failure and
                               ///< for an empty result.
    int furtherFiles = 0;      ///< Written by the stylesheet with exsl:document.
    std::string failure = {};  ///< What this host refused or could not do, one line; may be empty.
};

/// Supports exsl:document, whose files are serialised like the output, and one extension element of its own,
/// `copy-document` in the namespace urn:ventrix:desk-host: the output is then the unparsed content of the
/// document's file, with the DOCTYPE's system id replaced by the attribute `system-id`.
Transformed Transform(const TransformJob& job, const MessageSink& messages);

/// Writes the output of a transformation and creates the folders above it. The file changes as a whole or, on
/// failure, not at all; false then.
bool WriteOutput(const NativePath& path, std::string_view output);

}  // namespace ventrix::desk
