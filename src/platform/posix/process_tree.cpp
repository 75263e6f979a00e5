#include "platform/posix/process_tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <thread>

#include "platform/posix/descriptor.h"

namespace ventrix::platform {
namespace {

using Steady = std::chrono::steady_clock;

constexpr auto kGrace = std::chrono::seconds(1);
constexpr auto kPatience = std::chrono::seconds(10);
constexpr auto kBetweenLooks = std::chrono::milliseconds(20);

/// The parent of a running process; 0 if it has ended.
pid_t ParentOf(const char* number) {
    const std::string name = "/proc/" + std::string(number) + "/stat";
    const Descriptor file(::open(name.c_str(), O_RDONLY | O_CLOEXEC));
    char text[512];
    const ssize_t count = file.IsOpen() ? ::read(file.Number(), text, sizeof text - 1) : -1;
    if (count <= 0) {
        return 0;
    }
    text[count] = '\0';
    // "number (program) state parent ...": only the last parenthesis is sure to close the program's name.
    const char* nameEnd = std::strrchr(text, ')');
    char state = 'Z';
    int parent = 0;
    if (nameEnd == nullptr || std::sscanf(nameEnd, ") %c %d", &state, &parent) != 2) {
        return 0;
    }
    return state == 'Z' || state == 'X' ? 0 : parent;
}

std::multimap<pid_t, pid_t> ChildrenByParent() {
    std::multimap<pid_t, pid_t> children;
    DIR* folder = ::opendir("/proc");
    if (folder == nullptr) {
        return children;
    }
    while (const dirent* entry = ::readdir(folder)) {
        const auto process = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
        const pid_t parent = process > 0 ? ParentOf(entry->d_name) : 0;
        if (parent > 0) {
            children.emplace(parent, process);
        }
    }
    ::closedir(folder);
    return children;
}

/// True once no descendant runs; false if one still does after the time.
bool AwaitEnd(pid_t root, Steady::time_point until) {
    while (!RunningDescendants(root).empty()) {
        if (Steady::now() >= until) {
            return false;
        }
        std::this_thread::sleep_for(kBetweenLooks);
    }
    return true;
}

void SignalDescendants(pid_t root, int signal) {
    for (const pid_t process : RunningDescendants(root)) {
        ::kill(process, signal);
    }
}

}  // namespace

std::vector<pid_t> RunningDescendants(pid_t root) {
    const std::multimap<pid_t, pid_t> children = ChildrenByParent();
    std::vector<pid_t> found{root};
    for (std::size_t i = 0; i < found.size(); ++i) {
        const auto [first, last] = children.equal_range(found[i]);
        for (auto child = first; child != last; ++child) {
            if (child->second != ::getpid()) {
                found.push_back(child->second);
            }
        }
    }
    found.erase(found.begin());
    return found;
}

void EndDescendants(pid_t root) {
    const auto start = Steady::now();
    SignalDescendants(root, SIGTERM);
    SignalDescendants(root, SIGCONT);  // A stopped process does not see the other signal.
    bool ended = AwaitEnd(root, start + kGrace);
    // A single pass may miss a program that is being started at that moment.
    while (!ended && Steady::now() < start + kPatience) {
        SignalDescendants(root, SIGKILL);
        ended = AwaitEnd(root, Steady::now() + kBetweenLooks);
    }
}

}  // namespace ventrix::platform
