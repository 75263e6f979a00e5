// Whether the deliverables of a project file get in each other's way.
#pragma once

#include <array>

#include "desk/cli/project_file.h"

namespace ventrix::desk {

/// Options that name a result of one deliverable. A log, to which runs append, may be that of several.
inline constexpr std::array<const char*, 3> kResultOptions = {"output", "out-file", "report"};

/// Throws Stop if one deliverable would replace a result of another, or write a report or log over a file
/// that another reads.
void RequireSeparateResults(const Project& project);

}  // namespace ventrix::desk
