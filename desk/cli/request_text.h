// Composes the request text that a command line stands for.
#pragma once

#include <string>

#include "desk/cli/options.h"

namespace ventrix::desk {

/// The values of a publish request in the notation that the module reads: paths in system notation.
struct PublishValues {
    std::uint32_t documentId = 0;
    std::string outputFolder;  ///< With its closing backslash.
    std::string xslt, preScript, postScript, ditaval, outFile, log;
    bool ditaOt = false;
};

/// The text of a Publish request. Throws Stop for a value that no request can hold, with the name of its
/// option: one with both kinds of quote, or with more than 1023 bytes.
std::string PublishRequest(const PublishValues& values, const PublishOptions& options);

std::string ValidateRequest(std::uint32_t documentId, const std::string& log);

/// The text with each "{docId}" replaced.
std::string FillDocumentId(std::string text, std::uint32_t documentId);

}  // namespace ventrix::desk
