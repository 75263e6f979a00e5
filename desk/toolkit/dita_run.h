// What a DITA transformation gets and leaves behind, whichever toolkit does it. Strings are UTF-8.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "desk/toolkit/document_copies.h"
#include "desk/xml/stylesheet.h"
#include "desk/xml/subject.h"

namespace ventrix::desk {

// The rules of the built-in toolkit, by which a finding is sorted; docs/findings.md describes them.
inline constexpr char kBrokenLink[] = "broken-link";
inline constexpr char kUnknownKey[] = "unknown-key";
inline constexpr char kDeadReference[] = "dead-reference";
inline constexpr char kNotHandled[] = "not-handled";
inline constexpr char kToolkitRule[] = "toolkit";  ///< Everything else.

/// Something in a document that a toolkit did not do.
struct DitaFinding {
    NativePath file;
    int line = 0;  ///< 0 if unknown.
    std::string text;
    std::string rule = kToolkitRule;
    Subject subject = {};
};

/// How the built-in toolkit's pages look, beyond its own style sheet. Each member may be empty.
struct PageDesign {
    std::string title;      ///< Of the publication, instead of the document's.
    NativePath styleSheet;  ///< Counts after the toolkit's own.
    NativePath logo;        ///< An image for the head of each page.
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

    /// False to look for findings only: no file is written, and `pages` need not exist.
    bool writes = true;

    // For the built-in toolkit only.
    PageDesign design = {};
    DocumentCopies copies = {};

    // For an installed toolkit only.
    std::string transtype = "xhtml";
    std::vector<NativePath> resources;                            ///< Maps that define keys for the document.
    std::vector<std::pair<std::string, std::string>> parameters;  ///< Of the toolkit, by name.
};

}  // namespace ventrix::desk
