// Findings about files of the document that a run could not read.
#pragma once

#include <vector>

#include "desk/checks/finding.h"
#include "desk/cli/run_log.h"
#include "desk/documents/document_files.h"

namespace ventrix::desk {

/// The code of a finding about a file that is not well-formed.
inline constexpr char kNotReadable[] = "not-readable";

/// The files that the document refers to and that cannot be opened, in document order.
std::vector<NativePath> MissingFiles(const DocumentFiles& files);

/// Adds a finding for each missing file, which names the place that refers to it first.
void AddMissingFiles(const DocumentFiles& files, const std::vector<NativePath>& missing,
                     std::vector<Finding>& findings);

/// Adds a finding for each file that the module could not load.
void AddFailedFiles(const RunLog& log, std::vector<Finding>& findings);

/// Whether one of the findings is about the file that a toolkit's line names. The line may name the packaged
/// copy, which has the same file name.
bool NamesFileOf(const std::string& line, const std::vector<Finding>& findings);

}  // namespace ventrix::desk
