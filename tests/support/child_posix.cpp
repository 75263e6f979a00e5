#ifndef _WIN32

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <system_error>
#include <thread>

#include "support/child.h"

namespace ventrix::test {
namespace {

int SignalOf(Ending ending) {
    switch (ending) {
        case Ending::kInterrupt:
            return SIGINT;
        case Ending::kTerminate:
            return SIGTERM;
        case Ending::kHangUp:
            return SIGHUP;
        case Ending::kKill:
            break;
    }
    return SIGKILL;
}

std::vector<char*> Pointers(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    for (std::string& string : strings) {
        pointers.push_back(string.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

std::vector<Ending> Interruptions() {
    return {Ending::kInterrupt, Ending::kTerminate, Ending::kHangUp};
}

int StatusAfter(Ending ending) {
    return (ending == Ending::kKill ? 1000 : 128) + SignalOf(ending);
}

Child::Child(const ChildStart& start) {
    std::vector<std::string> arguments = start.arguments;
    arguments.insert(arguments.begin(), "ventrix");
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addchdir_np(&files, start.folder.c_str());
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, start.out.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, start.error.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t usual;
    sigfillset(&usual);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t process = 0;
    const int error = posix_spawn(&process, start.program.c_str(), &files, &attributes,
                                  Pointers(arguments).data(), environ);
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), start.program);
    }
    process_ = process;
}

Child::~Child() {
    if (process_ != -1) {
        End(Ending::kKill);
        waitpid(static_cast<pid_t>(process_), nullptr, 0);
    }
}

void Child::End(Ending ending) const {
    kill(static_cast<pid_t>(process_), SignalOf(ending));
}

int Child::Await(std::chrono::seconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    int status = 0;
    while (process_ != -1 && std::chrono::steady_clock::now() < end) {
        if (waitpid(static_cast<pid_t>(process_), &status, WNOHANG) == process_) {
            process_ = -1;
            return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return -1;
}

void KillStarted(const platform::ProcessHandle& process) {
    kill(static_cast<pid_t>(process.id), SIGKILL);
}

std::int64_t PassedOutput(int /*file*/) {
    return 0;  // It is inherited.
}

bool IsRunning(const std::string& numberFile) {
    std::string number;
    std::ifstream(numberFile) >> number;
    std::string word;
    std::ifstream status("/proc/" + number + "/status");
    while (status >> word && word != "State:") {
    }
    return status >> word && word != "Z" && word != "X";  // No zombie.
}

}  // namespace ventrix::test

#endif
