// Composes the text of a request from the options of the command line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "desk/cli/options.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

/// The values of a Publish request, as the module expects them. Empty values are left out.
struct PublishValues {
    std::uint32_t documentId = 0;
    SystemPath outputFolder;  ///< With a trailing backslash.
    SystemPath xslt, preScript, postScript, ditaval, outFile, log;
    bool ditaOt = false;
};

/// Returns the text of a Publish request. Throws Stop, naming the option, for a value that a request cannot
/// express: one with both single and double quotes, or longer than 1023 bytes.
std::string PublishRequest(const PublishValues& values, const PublishOptions& options);

/// Returns the text of a Validate request. Throws Stop as PublishRequest does.
std::string ValidateRequest(std::uint32_t documentId, const SystemPath& log);

/// True if a request begins with this command, as the module reads it: in or without quotes, whatever its
/// case.
bool IsRequest(std::string_view text, std::string_view command);

/// Replaces each "{docId}" by the id.
std::string FillDocumentId(std::string text, std::uint32_t documentId);

}  // namespace ventrix::desk
