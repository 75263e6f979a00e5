// Waiting for what other processes do. Nothing waits for longer than ten seconds.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>

namespace ventrix::test {

template <typename Condition>
bool Eventually(const Condition& condition) {
    for (int look = 0; look < 500; ++look) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

/// True if the process whose number a script wrote into the file is there and no zombie.
inline bool IsRunning(const std::string& pidFile) {
    std::string number;
    std::ifstream(pidFile) >> number;
    std::string word;
    std::ifstream status("/proc/" + number + "/status");
    while (status >> word && word != "State:") {
    }
    return status >> word && word != "Z" && word != "X";
}

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
