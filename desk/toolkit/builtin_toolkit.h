// Transforms a DITA map or topic with our own stylesheet: one XHTML page for each topic, an index for a map,
// and copies of graphics and other local files in the corresponding folders. Memory holds one topic at a time
// and a few that it refers to. Strings are UTF-8.
#pragma once

#include <string>

#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

/// One run of a DITA transformation.
struct DitaRun {
    NativePath document;
    NativePath ditaval;  ///< May be empty.
    NativePath pages;    ///< The folder for the pages, with a closing slash.
    MessageSink log;     ///< Receives each line of the run's log.

    /// Receives each file that could not be read, as one line: a page or part of one is missing.
    MessageSink unread = [](const std::string&) {};
};

/// Empty on success, with or without warnings; else the reason, one line.
std::string RunBuiltinToolkit(const DitaRun& run, const NativePath& stylesheetPath);

}  // namespace ventrix::desk
