// Stylesheets of XSLT 2.0 and 3.0, with Saxon-HE in a process of its own. Strings are UTF-8.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

/// The version that a stylesheet declares, such as "2.0"; empty if it cannot be read.
std::string VersionOf(const NativePath& stylesheet);

/// Why Saxon cannot run on this machine, one line that says what to do; empty if it can.
std::string SaxonProblem();

struct SaxonJob {
    NativePath source, stylesheet, output;
    std::vector<std::pair<std::string, std::string>> strings, expressions;  ///< Parameters by name.
};

/// Runs the stylesheet; its messages, one line each, go to the sink. A page that it would write as HTML is
/// written as XHTML, if `xsl:output` asks for HTML. Empty on success; else the reason, one line, and the
/// output may be incomplete.
std::string RunSaxon(const SaxonJob& job, const MessageSink& messages);

}  // namespace ventrix::desk
