// The file of the running program, and what a file must be to be run. Strings are UTF-8, paths native.
#pragma once

#include <string>

namespace ventrix::platform {

/// The absolute path of the program's file. Empty if the system does not provide it.
std::string ProgramFile();

/// Whether the file may be run: on POSIX by its permissions, on Windows by its suffix.
bool IsExecutable(const std::string& file);

/// What a user does about a file that is not executable, as the end of a message.
std::string HowToMakeExecutable();

}  // namespace ventrix::platform
