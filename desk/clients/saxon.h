// Stylesheets of XSLT 2.0 and 3.0, with Saxon-HE in a process of its own. Strings are UTF-8.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

/// The version that a stylesheet declares, such as "2.0"; empty if it cannot be read.
std::string VersionOf(const NativePath& stylesheet);

/// Whether a stylesheet of this version needs more than XSLT 1.0.
bool IsNewerVersion(const std::string& version);

/// Why Saxon cannot run on this machine, one line that says what to do; empty if it can.
std::string SaxonProblem();

struct SaxonJob {
    NativePath source, stylesheet, output;
    NativePath outputFolder;  ///< Whose new pages are the result, with the output.
    std::vector<std::pair<std::string, std::string>> strings, expressions;  ///< Parameters by name.
};

/// Runs the stylesheet; its messages, one line each, go to the sink. Pages that it writes as HTML or XHTML
/// become the XHTML that desk/xml/xhtml.h describes: the output, and new files of the folder whose names end
/// in .html or .htm. Empty on success; else the reason, one line, and the output may be incomplete.
std::string RunSaxon(const SaxonJob& job, const MessageSink& messages);

}  // namespace ventrix::desk
