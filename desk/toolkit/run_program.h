// Starts a program with its output in a file and waits for it. Arguments and paths are native.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// The program's native path: looked up in PATH if the name has no slash. Empty if it is missing or not
/// executable.
NativePath FindProgram(const std::string& name);

/// Appends the program's standard output and error to the file; its standard input is empty, and its locale
/// is UTF-8, so that Java reads file names as they are. Gives the exit status, 128 and the number after a
/// signal, or nothing if it could not be started.
std::optional<int> RunProgram(const std::vector<std::string>& arguments, const NativePath& outputFile);

}  // namespace ventrix::desk
