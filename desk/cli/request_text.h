// Composes the request text that a command line stands for.
#pragma once

#include <string>

#include "desk/cli/options.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

/// The values of a publish request. An empty path stands for an option that was not given.
struct PublishValues {
    std::uint32_t documentId = 0;
    SystemPath outputFolder;  ///< With its closing backslash.
    SystemPath xslt, preScript, postScript, ditaval, outFile, log;
    bool ditaOt = false;
};

/// The text of a Publish request. Throws Stop for a value that no request can hold, with the name of its
/// option: one with both kinds of quote, or with more than 1023 bytes.
std::string PublishRequest(const PublishValues& values, const PublishOptions& options);

std::string ValidateRequest(std::uint32_t documentId, const SystemPath& log);

/// The text with each "{docId}" replaced.
std::string FillDocumentId(std::string text, std::uint32_t documentId);

}  // namespace ventrix::desk
