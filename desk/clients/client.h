// What another client of the host is to the desk host: one command text in, one answer out. All texts are
// UTF-8; paths in commands and answers are in the system's backslash notation.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

using AnswerValue = std::variant<std::int32_t, std::string>;

struct ClientAnswer {
    std::int32_t status = 0;  ///< 0 success; anything else is what the host reports as the call's status.
    std::int32_t number = 0;  ///< The integer answer of a plain client call.
    std::vector<AnswerValue> values;  ///< The list answer of a call for values.
};

/// What a client may ask of the host while it runs.
struct HostServices {
    /// The document's path; empty for an id that is not open.
    std::function<SystemPath(std::uint32_t documentId)> documentPath;
    /// Writes to the host's console.
    std::function<void(const std::string& text)> console;
};

using Client = std::function<ClientAnswer(const std::string& command, const HostServices& host)>;

/// What the transformations of a run came to. The clients fill it; the command line tells the person.
struct TransformationRecord {
    int started = 0;     ///< Transformations that a client was asked for.
    int failed = 0;      ///< Those that failed or wrote nothing.
    std::string reason;  ///< Of the first failure: one line; empty without one.
    NativePath logFile;  ///< Native path of the log that tells more; may be empty.
};

}  // namespace ventrix::desk
