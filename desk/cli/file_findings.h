// Findings about files of the document that a run could not read, and what follows from them.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/cli/run_log.h"
#include "desk/documents/document_files.h"
#include "desk/toolkit/dita_run.h"

namespace ventrix::desk {

/// The code of a finding about a file that is not well-formed.
inline constexpr char kNotReadable[] = "not-readable";

/// The files that the document refers to and that cannot be opened, in document order.
std::vector<NativePath> MissingFiles(const DocumentFiles& files);

/// A finding for each missing file, at the place that refers to it first.
std::vector<Finding> MissingReferences(const DocumentFiles& files, const std::vector<NativePath>& missing);

/// An error of the module's parser.
struct FailureReason {
    std::string text;          ///< Without the place.
    int line = 0, column = 0;  ///< 0 if unknown.
};

FailureReason SplitReason(const std::string& reason);

/// Adds a finding for each of these files, which the module could not load.
void AddFailedFiles(const std::vector<FailedFile>& files, std::vector<Finding>& findings);

/// A finding for a line of the toolkit about what it could not read, which may begin with the document's
/// name.
Finding NotTransformed(const std::string& line, const NativePath& document);

/// Whether one of the findings is about the file that a toolkit's line names. The line may name the packaged
/// copy, which has the same file name.
bool NamesFileOf(const std::string& line, const std::vector<Finding>& findings);

/// The files of the findings that are about a missing file, or one that is not well-formed.
std::set<NativePath> UnusableIn(const std::vector<Finding>& findings);

/// Adds what a transformation reports, without what follows from a file that cannot be used: a link to it,
/// for example, which is dead because the file is missing.
void AddTransformationFindings(const std::vector<DitaFinding>& found, const std::set<NativePath>& unusable,
                               std::vector<Finding>& findings);

}  // namespace ventrix::desk
