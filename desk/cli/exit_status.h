// The exit statuses of `ventrix`. Scripts rely on them: they never change their meaning.
#pragma once

#include <string>

namespace ventrix::desk {

enum ExitStatus : int {
    ExitDone = 0,
    ExitFindings = 1,        ///< Done, but something was found: a mask, a missing file, a file that failed.
    ExitUsage = 2,           ///< The command line is wrong.
    ExitUnreadable = 3,      ///< The document cannot be read.
    ExitRefused = 4,         ///< The module refused the request, or packaging ended it.
    ExitOutputRefused = 5,   ///< The output folder must not be emptied or cannot be written.
    ExitTransformation = 6,  ///< The transformation failed or wrote nothing.
    ExitNoModule = 7,        ///< The host or the module could not start.
    ExitInterrupted = 130,   ///< Ctrl-C.
};

/// Thrown to end the command with this exit status and message.
struct Stop {
    int status;
    std::string text;
};

}  // namespace ventrix::desk
