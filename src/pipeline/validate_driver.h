// Checks whether an open document can be published: a bit mask for the caller, sections in the report log for
// the user.
#pragma once

#include <cstdint>

#include "fileset/path_classification.h"

namespace ventrix {

constexpr int kValidateBroken = 1;          ///< A referenced file cannot be read.
constexpr int kValidateUnsaved = 2;         ///< A referenced file has unsaved changes in the host.
constexpr int kValidateOnSeveralRoots = 8;  ///< The documents are on several roots, which packaging refuses.
constexpr int kValidateWithoutLog = 16;     ///< The log could not be opened; nothing was checked.

/// Scans the document's references anew, reports them in the log and returns the mask of the bits above; 0
/// means that the document can be published as it is. An empty `logFile` gives kValidateWithoutLog.
int ValidateDocument(std::uint32_t documentId, Path logFile);

}  // namespace ventrix
