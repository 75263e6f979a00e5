// The exit statuses of `ventrix`. Scripts rely on them: they never change their meaning. A run that is
// interrupted ends with 128 and the signal's number (platform/interruption.h).
#pragma once

#include <string>

namespace ventrix::desk {

enum ExitStatus : int {
    kExitDone = 0,
    kExitFindings = 1,        ///< Done, but something was found: a mask, a missing file, a file that failed.
    kExitUsage = 2,           ///< The command line is wrong.
    kExitUnreadable = 3,      ///< The document cannot be read.
    kExitRefused = 4,         ///< The module refused the request, or packaging ended it.
    kExitOutputRefused = 5,   ///< The output folder must not be emptied or cannot be written.
    kExitTransformation = 6,  ///< The transformation failed or wrote nothing.
    kExitNoModule = 7,        ///< The host or the module could not start.
};

/// Thrown to end the command with this exit status and message.
struct Stop {
    int status;
    std::string text;
};

}  // namespace ventrix::desk
