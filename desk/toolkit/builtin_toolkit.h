// The transformation of a DITA map or topic with our own stylesheet: one XHTML page for each topic, an index
// for a map, graphics and other local files copied to their relative places. One topic at a time is in
// memory.
#pragma once

#include <string>

#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

/// One run of a DITA transformation.
struct DitaRun {
    NativePath document;
    NativePath ditaval;  ///< May be empty.
    NativePath pages;    ///< The folder that gets the pages, with a closing slash.
    MessageSink log;     ///< Takes each line of the run's log.
};

/// Empty after a success, warnings included; else the reason, one line.
std::string RunBuiltinToolkit(const DitaRun& run, const NativePath& stylesheetPath);

}  // namespace ventrix::desk
