// What a DITA transformation gets and leaves behind, whichever toolkit does it. Strings are UTF-8.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

/// Something in a document that a toolkit did not do.
struct DitaFinding {
    NativePath file;
    int line = 0;  ///< 0 if unknown.
    std::string text;
};

/// One run of a DITA transformation.
struct DitaRun {
    NativePath document;
    std::vector<NativePath> filters;  ///< DITAVAL files; the first rule that matches counts.
    NativePath pages;                 ///< The folder for the pages, with a closing slash.
    MessageSink log;                  ///< Receives each line of the run's log.

    /// Receives each file that could not be read, as one line: a page or part of one is missing.
    MessageSink unread = [](const std::string&) {};

    /// Receives what was not done, although the run succeeds.
    std::function<void(const DitaFinding&)> finding = [](const DitaFinding&) {};

    // For an installed toolkit only.
    std::string transtype = "xhtml";
    std::vector<NativePath> resources;                            ///< Maps that define keys for the document.
    std::vector<std::pair<std::string, std::string>> parameters;  ///< Of the toolkit, by name.
};

}  // namespace ventrix::desk
