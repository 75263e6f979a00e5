// Tells whether an open document can be published: a bit mask for the caller, sections in the report log for
// the user.
#pragma once

#include <cstdint>

#include "fileset/path_classification.h"

namespace ventrix {

constexpr int kValidateBroken = 1;   ///< A referenced file can't be read.
constexpr int kValidateUnsaved = 2;  ///< A referenced file has unsaved changes in the host.
constexpr int kValidateOnSeveralRoots =
    8;                                   ///< The documents lie on several roots: packaging would refuse them.
constexpr int kValidateWithoutLog = 16;  ///< The log could not be opened, and nothing was looked at.

/// Scans the document's references anew, reports them in the log and returns the mask of the bits above; 0
/// means that the document can be published as it is. `logFile` may be empty, which gives
/// validateWithoutLog.
int ValidateDocument(std::uint32_t documentId, Path logFile);

}  // namespace ventrix
