// Starting programs from a command line and waiting for them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/error_codes.h"

namespace ventrix::platform {

/// The first executable file with this name in the folders of PATH. Empty if there is none.
std::string FindInPath(const std::string& name);

struct ProcessHandle {
    std::int64_t id = 0;  ///< 0: no process.
};

/// Starts a program; command_line.h has the rules for the text (UTF-8, paths in system notation). The program
/// inherits the environment, current folder, standard output and standard error. Its standard input is empty,
/// and it inherits no other open files. A program without a folder is searched for in the current folder,
/// then in PATH. An executable text file without an interpreter line is run by the shell. On failure
/// `process` has no id: kErrorFileNotFound, kErrorPathNotFound, kErrorAccessDenied (also for a file that is
/// not executable), kErrorBadExeFormat, or kErrorInvalidParameter for an empty command line.
ErrorCode StartProcess(std::string_view commandLine, ProcessHandle& process);

/// Waits for the process without a time limit and returns its exit code: after a signal, 128 plus its number.
/// Returns -1 immediately if there is no process. The handle is empty afterwards.
int WaitForProcess(ProcessHandle& process);

}  // namespace ventrix::platform
