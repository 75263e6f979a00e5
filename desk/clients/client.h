// What the desk host requires of the other clients that the module calls: a function from a command string to
// an answer. Strings are UTF-8; paths in commands and answers are in system notation unless a client says
// otherwise.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

using AnswerValue = std::variant<std::int32_t, std::string>;

struct ClientAnswer {
    std::int32_t status = 0;  ///< 0 for success; any other value is reported as the status of the call.
    std::int32_t number = 0;  ///< The answer of a plain client call.
    std::vector<AnswerValue> values;  ///< The answer of a call for values.
};

/// What a client may ask of the host while it runs. Either function may be empty.
struct HostServices {
    /// The path of an open document; empty if no document has this id.
    std::function<SystemPath(std::uint32_t documentId)> documentPath;

    /// Writes to the host's console; line breaks are the caller's.
    std::function<void(const std::string& text)> console;
};

using Client = std::function<ClientAnswer(const std::string& command, const HostServices& host)>;

/// Which files the transformations of a run may use. Folders count with all that is below them.
struct FileAccess {
    std::vector<NativePath> readable;  ///< Beside the folders of the document and of the stylesheets.
    NativePath outputFolder;  ///< What a stylesheet may write in; empty for the output file's folder.
};

/// Runs the action and returns its result, or the message of an exception that it throws, in one line. The
/// module calls clients and must not see an exception.
std::string ReasonOf(const std::function<std::string()>& action);

/// The outcome of a run's transformations, filled in by the clients for the command line.
struct TransformationRecord {
    int started = 0;               ///< Transformations that a client was asked for.
    int failed = 0;                ///< Those that failed or wrote nothing.
    std::string reason;            ///< Of the first failure, one line; empty if none failed.
    NativePath logFile;            ///< The log with more details; may be empty.
    std::set<std::string> unread;  ///< Files that the built-in toolkit could not read, each with the reason.
    std::set<NativePath>
        folders;  ///< Those that a DITA run left among its pages, and the folder of the pages.
    std::vector<std::string> findings;  ///< Errors that a toolkit reported although it ended with success.
};

}  // namespace ventrix::desk
