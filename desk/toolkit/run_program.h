// Runs a program to its end, with its output in a file. Strings are UTF-8 and reach the program as they are.
#pragma once

#include <string>
#include <vector>

#include "desk/paths/paths.h"
#include "platform/child_process.h"

namespace ventrix::desk {

/// The program's path; a name without a slash is looked up in PATH. Empty if it is missing or not executable.
NativePath FindProgram(const std::string& name);

/// Appends the program's standard output and error to the file. Its standard input is empty, and its locale
/// is UTF-8, so that Java decodes file names correctly.
platform::ProgramEnd RunProgram(const std::vector<std::string>& arguments, const NativePath& outputFile);

}  // namespace ventrix::desk
