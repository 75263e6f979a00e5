#include "program_run.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace ventrix::test {
namespace {

constexpr int kLimitMilliseconds = 20000;

std::vector<char*> Pointers(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    for (std::string& string : strings) {
        pointers.push_back(string.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

std::string ProgramMissing() {
    return ::access(VENTRIX_RELEASE_PROGRAM, X_OK) == 0 ? ""
                                                        : "there is no " VENTRIX_RELEASE_PROGRAM
                                                          "; build it with ./dev build";
}

ProgramRun::ProgramRun(const std::string& folder, std::vector<std::string> arguments,
                       std::vector<std::string> environment) {
    arguments.insert(arguments.begin(), "ventrix");
    environment.insert(environment.begin(), "PATH=/usr/bin:/bin");
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addchdir_np(&files, folder.c_str());
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, streams_.Native("out").c_str(),
                                     O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, streams_.Native("error").c_str(),
                                     O_WRONLY | O_CREAT, 0600);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t usual;
    sigfillset(&usual);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    if (posix_spawn(&process_, VENTRIX_RELEASE_PROGRAM, &files, &attributes, Pointers(arguments).data(),
                    Pointers(environment).data()) == 0) {
        descriptor_ = static_cast<int>(::syscall(SYS_pidfd_open, process_, 0));
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
}

ProgramRun::~ProgramRun() {
    if (descriptor_ >= 0) {
        Signal(SIGKILL);
        Await();
    }
}

void ProgramRun::Signal(int signal) const {
    ::kill(process_, signal);
}

int ProgramRun::Await() {
    if (descriptor_ < 0) {
        return -1;
    }
    pollfd ended{descriptor_, POLLIN, 0};
    const bool inTime = ::poll(&ended, 1, kLimitMilliseconds) == 1;
    if (!inTime) {
        Signal(SIGKILL);
    }
    ::close(descriptor_);
    descriptor_ = -1;
    int status = 0;
    ::waitpid(process_, &status, 0);
    if (!inTime) {
        return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

}  // namespace ventrix::test
