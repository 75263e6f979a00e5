#include "desk/toolkit/run_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "platform/process.h"

namespace ventrix::desk {
namespace {

/// This process's environment with the locale replaced.
std::vector<std::string> EnvironmentInUtf8() {
    std::vector<std::string> environment{"LC_ALL=C.UTF-8"};
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!text.starts_with("LC_ALL=")) {
            environment.push_back(text);
        }
    }
    return environment;
}

std::vector<char*> Pointers(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (std::string& string : strings) {
        pointers.push_back(string.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

int ExitStatusOf(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

NativePath FindProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return access(name.c_str(), X_OK) == 0 ? NativePath{name} : NativePath{};
    }
    return {platform::FindInPath(name)};
}

std::optional<int> RunProgram(const std::vector<std::string>& arguments, const NativePath& outputFile) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile.utf8.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, 0666);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    std::vector<std::string> words = arguments;
    std::vector<std::string> environment = EnvironmentInUtf8();
    pid_t child = 0;
    const int error = posix_spawn(&child, words.front().c_str(), &actions, nullptr, Pointers(words).data(),
                                  Pointers(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? std::optional(ExitStatusOf(child)) : std::nullopt;
}

}  // namespace ventrix::desk
