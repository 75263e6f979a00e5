// Stylesheets over libxslt, with EXSLT and this host's own extension. While one is loaded or runs, the
// process fetches nothing from a network: DTDs, imported stylesheets and documents come from local files and
// the XML catalogs. Paths are native, texts UTF-8.
#pragma once

#include <libxslt/xsltInternals.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "desk/paths/paths.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {

/// Takes a message of a stylesheet or of the parser: one line, without a line break.
using MessageSink = std::function<void(const std::string& line)>;

struct FreeStylesheet {
    void operator()(xsltStylesheet* stylesheet) const { xsltFreeStylesheet(stylesheet); }
};
using Stylesheet = std::unique_ptr<xsltStylesheet, FreeStylesheet>;

/// Null if the stylesheet is missing or faulty; the first message then tells why.
Stylesheet LoadStylesheet(const NativePath& path, const MessageSink& messages);

/// A document as a stylesheet wants it. An entity that nobody declares is a message and stays empty. Null,
/// with a message, if the document is missing or not well-formed.
XmlDocument LoadForStylesheet(const NativePath& path, const MessageSink& messages);

struct TransformJob {
    const Stylesheet& stylesheet;
    xmlDoc* document = nullptr;
    NativePath sourcePath;  ///< Where the document's text lies, for copy-document; may be empty.
    NativePath outputPath;  ///< What further files that the stylesheet writes are relative to; may be empty.
    std::map<std::string, std::string> parameters = {};  ///< Texts by name; no quoting is needed.
};

struct Transformed {
    bool done = false;   ///< False if the run failed or was stopped by the stylesheet.
    std::string output;  ///< As `xsl:output` orders it; empty on failure.
};

/// Serves one extension element, `copy-document` of the namespace urn:ventrix:desk-host: the output is then
/// the text of the document as it lies in its file, with the DOCTYPE's system id replaced by the attribute
/// `system-id`.
Transformed Transform(const TransformJob& job, const MessageSink& messages);

/// Writes the output of a transformation, creating the folders above it. The file changes as a whole, or on
/// failure not at all; false then.
bool WriteOutput(const NativePath& path, std::string_view output);

}  // namespace ventrix::desk
