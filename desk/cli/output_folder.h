// Guards the output folder: packaging empties it, so it must be one that nobody misses. Paths are absolute.
#pragma once

#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Why the folder must not be emptied, in one line; empty if it may. A folder that holds one of the inputs, a
/// home folder or a root (of the machine or of a drive), and what lies above those, is refused even with
/// `force`; one that is not empty and was not made by an earlier run is refused without it.
std::string OutputRefusal(const NativePath& folder, const std::vector<NativePath>& inputs, bool force);

/// Creates the folder where it is missing. Empty on success, else why not.
std::string PrepareOutput(const NativePath& folder);

/// Notes in the folder that a run made it. Safe to call from a signal handler with the name from
/// OutputMarkName.
void MarkOutput(const char* markName);

NativePath OutputMarkName(const NativePath& folder);

}  // namespace ventrix::desk
