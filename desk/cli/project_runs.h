// What a command line asks for, together with the project file: which deliverables run, and with which
// options. The command line wins over a deliverable, and a deliverable over the defaults of the file.
#pragma once

#include <string>
#include <vector>

#include "desk/cli/options.h"

namespace ventrix::desk {

struct RunPlan {
    std::vector<Options> runs;       ///< In order; at least one.
    std::vector<std::string> notes;  ///< For the user.
};

/// `options` are those of the command line `words` alone. Throws Stop, before anything runs, for a project
/// file that is invalid, an unknown deliverable, deliverables that would replace each other's results, and
/// options that are missing or do not fit together.
RunPlan PlanRuns(const std::vector<std::string>& words, const Options& options);

/// An error message with its place in front if it is about an option that the project file sets.
std::string WithOrigin(const std::string& text, const Options& options);

}  // namespace ventrix::desk
