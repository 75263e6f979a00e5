// The transformation of a DITA map or topic with our own stylesheet: one XHTML page for each topic, an index
// for a map, graphics and other local files copied to their relative places. One topic at a time is in
// memory.
#pragma once

#include <string>

#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

/// One run of a DITA transformation. All paths are native.
struct DitaRun {
    std::string document;
    std::string ditaval;  ///< May be empty.
    std::string pages;    ///< The folder that gets the pages, with a closing slash.
    MessageSink log;      ///< Takes each line of the run's log.
};

/// Empty after a success, warnings included; else the reason, one line.
std::string RunBuiltinToolkit(const DitaRun& run, const std::string& stylesheetPath);

}  // namespace ventrix::desk
