// Protects the output folder. Packaging empties it, so it must not contain anything that a user needs.
// Paths are absolute.
#pragma once

#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Returns why the folder must not be emptied, in one line; empty if it may be. A folder that is or
/// contains an input, a home folder or a root folder (of the system or of a drive) is refused even with
/// `force`. A folder that is not empty and was not created by an earlier run is refused without `force`.
std::string OutputRefusal(const NativePath& folder, const std::vector<NativePath>& inputs, bool force);

/// Creates the folder if it is missing. Returns an empty string on success, else the reason for the
/// failure.
std::string PrepareOutput(const NativePath& folder);

/// Creates the file that marks an output folder as the work of a run. `markName` comes from OutputMarkName.
void MarkOutput(const char* markName);

/// Returns the path of the mark in this output folder.
NativePath OutputMarkName(const NativePath& folder);

}  // namespace ventrix::desk
