// Runs `ventrix` as a separate process in a folder of the test.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/test_folder.h"

namespace ventrix::test {

struct Finished {
    int status = -1;  ///< The exit status, or 1000 plus the number of the signal that ended it.
    std::string out, error;
};

struct RunSettings {
    std::string program = VENTRIX_PROGRAM;
    std::string standardOutput = {};  ///< A file to write to instead of `Finished::out`.
};

/// Runs the program with these arguments in the folder, without a terminal and with empty standard input.
inline Finished RunVentrix(const TestFolder& folder, std::vector<std::string> arguments,
                           const RunSettings& settings = {}) {
    const TestFolder streams;
    const std::string out = settings.standardOutput.empty() ? streams.Native("out") : settings.standardOutput;
    const std::string error = streams.Native("error");
    arguments.insert(arguments.begin(), "ventrix");
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addchdir_np(&files, folder.Native().c_str());
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, error.c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t process = 0;
    Finished finished;
    int status = 0;
    if (posix_spawn(&process, settings.program.c_str(), &files, nullptr, pointers.data(), environ) == 0 &&
        waitpid(process, &status, 0) == process) {
        finished.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    }
    posix_spawn_file_actions_destroy(&files);
    finished.out = settings.standardOutput.empty() ? streams.Read("out") : "";
    finished.error = streams.Read("error");
    return finished;
}

}  // namespace ventrix::test
