// Programs started from a command line text, and the rules by which such a text is cut into arguments. A
// started program is native: it gets paths in native notation.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/drives.h"
#include "platform/error_codes.h"

namespace ventrix::platform {

/// Cuts a command line as the platform does. The program is what stands between a leading quote and the next
/// one, or what stands before the first blank or tab; nothing is escaped in it. In the arguments, a quote
/// opens or closes a stretch in which blanks count as text, 2n backslashes before a quote are n backslashes,
/// 2n+1 are n and a plain quote, and two quotes inside a quoted stretch are a plain quote. Empty or blank
/// text gives no arguments.
std::vector<std::string> SplitCommandLine(std::string_view text);

/// The arguments as a native program needs them: the first one (the program), and every other that is an
/// absolute path in system notation on a known root, in native notation. All others stay.
std::vector<std::string> NativeArguments(const DriveTable& drives, std::vector<std::string> arguments);

/// The file that PATH leads to for a program's name: the first one that is executable. Empty if there is
/// none.
std::string FindInPath(const std::string& name);

struct ProcessHandle {
    std::int64_t id = 0;  ///< 0: no process.
};

/// Starts a program with this process's environment and current folder, standard output and error. Its
/// standard input is empty, so that a program that asks for input ends; no other open file is handed on. A
/// program without a folder is looked up in the current folder, then in PATH. An executable text file that
/// names no interpreter runs in the shell. Failure: errorFileNotFound, errorPathNotFound, errorAccessDenied
/// (also a file that is not executable), errorBadExeFormat, errorInvalidParameter for an empty text; then
/// `process` has no id.
ErrorCode StartProcess(std::string_view commandLine, ProcessHandle& process);

/// Waits without a limit for the end of a process and gives its exit code (128 and the signal's number after
/// a signal); -1 at once for no process. The handle is empty afterwards.
int WaitForProcess(ProcessHandle& process);

}  // namespace ventrix::platform
