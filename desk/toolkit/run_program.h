// Starts a program with its output in a file and waits for it. Arguments and paths are native.
#pragma once

#include <string>
#include <vector>

#include "platform/child_process.h"

namespace ventrix::desk {

/// The program's native path: looked up in PATH if the name has no slash. Empty if it is missing or not
/// executable.
std::string FindProgram(const std::string& name);

/// Appends the program's standard output and error to the file; its standard input is empty, and its locale
/// is UTF-8, so that Java reads file names as they are.
platform::ProgramEnd RunProgram(const std::vector<std::string>& arguments, const std::string& outputFile);

}  // namespace ventrix::desk
