// Guards the output folder: packaging empties it, so it must be one that nobody misses. Paths are native and
// absolute.
#pragma once

#include <string>
#include <vector>

namespace ventrix::desk {

/// Why the folder must not be emptied, in one line; empty if it may. A folder that holds one of the inputs, a
/// home folder or a root (of the machine or of a drive), and what lies above those, is refused even with
/// `force`; one that is not empty and was not made by an earlier run is refused without it.
std::string OutputRefusal(const std::string& folder, const std::vector<std::string>& inputs, bool force);

/// Creates the folder where it is missing. Empty on success, else why not.
std::string PrepareOutput(const std::string& folder);

/// Notes in the folder that a run made it. The name is that from OutputMarkName.
void MarkOutput(const char* markName);

std::string OutputMarkName(const std::string& folder);

}  // namespace ventrix::desk
