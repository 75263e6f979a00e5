// Waiting for the end of a forked process, for at most ten seconds.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "support/child.h"

namespace ventrix::test {

/// The exit status of a child, or 1000 and the signal that ended it; -1 if it does not end, which ends it by
/// force.
inline int AwaitChild(pid_t child) {
    int status = 0;
    if (!Eventually([&] { return waitpid(child, &status, WNOHANG) == child; })) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

}  // namespace ventrix::test
