// The exit statuses of `ventrix`. Scripts depend on them, so their meanings never change. A run that is
// interrupted ends with 128 plus the number of the signal (platform/interruption.h).
#pragma once

#include <array>
#include <string>

namespace ventrix::desk {

enum ExitStatus : int {
    kExitDone = 0,
    kExitFindings = 1,        ///< Completed, with findings, such as a missing or unreadable file.
    kExitUsage = 2,           ///< Invalid usage.
    kExitUnreadable = 3,      ///< The document cannot be read.
    kExitRefused = 4,         ///< The module refused the request, or packaging failed.
    kExitOutputRefused = 5,   ///< The output folder must not be emptied or is not writable.
    kExitTransformation = 6,  ///< The transformation failed or wrote no pages.
    kExitNoModule = 7,        ///< The host or the module could not start.
};

struct ExitMeaning {
    ExitStatus status;
    const char* text;
};

/// What the help and the documents say about each.
inline constexpr std::array<ExitMeaning, 8> kExitMeanings = {{
    {kExitDone, "success"},
    {kExitFindings, "completed, with findings"},
    {kExitUsage, "invalid usage"},
    {kExitUnreadable, "the document cannot be read"},
    {kExitRefused, "the module refused the request, or packaging failed"},
    {kExitOutputRefused, "the output folder cannot be used"},
    {kExitTransformation, "the transformation failed or wrote no pages"},
    {kExitNoModule, "the host or the module could not start"},
}};

inline constexpr char kSignalStatus[] = "128+n";
inline constexpr char kSignalMeaning[] = "signal n ended the run, for example 130 after Ctrl-C";

/// Thrown to end the command with an exit status and an error message.
struct Stop {
    int status;
    std::string text;
};

}  // namespace ventrix::desk
