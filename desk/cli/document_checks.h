// Compares a document with what the run is to do with it: files that the module passes over, and names in the
// options that do not occur.
#pragma once

#include "desk/cli/options.h"
#include "desk/cli/run_report.h"
#include "desk/cli/screen.h"
#include "desk/documents/document_files.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Throws Stop if the document is a project file of the DITA Open Toolkit.
void RefuseToolkitProject(const NativePath& document);

/// A file with XML content that the module passes over is a warning, any other a note.
void ReportPassedOverFiles(const DocumentFiles& files, RunReport& report, const Screen& screen);

/// A name that does not occur in any file is a note. It is a warning if it is probably a misspelling of a
/// name that occurs, unless it is a standard name itself.
void ReportAbsentNames(const PublishOptions& options, const DocumentNames& names, RunReport& report,
                       const Screen& screen);

}  // namespace ventrix::desk
