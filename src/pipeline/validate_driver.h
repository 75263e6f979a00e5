// Checks whether an open document can be published: a bit mask for the caller, sections in the report log for
// the user.
#pragma once

#include <cstdint>

#include "bridge/contract/request.h"
#include "fileset/path_classification.h"

namespace ventrix {

/// Scans the document's references again, reports them in the log and returns the sum of kValidate bits; 0
/// means that the document can be published as it is. `logFile` may be empty: that gives kValidateWithoutLog.
std::int32_t ValidateDocument(std::uint32_t documentId, Path logFile);

}  // namespace ventrix
