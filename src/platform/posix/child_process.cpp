#include "platform/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <system_error>

#include "platform/posix/descriptor.h"
#include "platform/posix/process_tree.h"
#include "platform/posix/shell_script.h"

// A program is not started as a child of the run but below a guard, a process in between that is forked for
// it:
//
//     run  ->  guard  ->  program  ->  whatever the program starts
//
// The guard adopts the processes that the program leaves running (it is a "child subreaper"), watches the
// owner through a descriptor that becomes readable when the owner ends, however it ends, and then ends all
// that runs below it. It ends itself when nothing is left below it. Two reports reach the run through a pipe:
// whether the program started, and how it ended. The guard has a process group of its own, as has the
// program, so that no signal from a terminal reaches either: the run decides when they end.

namespace ventrix::platform {
namespace {

constexpr int kReportDescriptor = STDERR_FILENO + 1;  ///< Of the guard.
constexpr int kLost = -1;                             ///< In place of a report: the guard was ended by force.

/// All that is needed after fork, where nothing may be allocated.
struct Command {
    std::string program;
    std::vector<std::string> words;
    std::vector<char*> arguments;
    std::vector<char*> shellArguments;
    std::vector<std::string> variables;
    std::vector<char*> environment;
    std::string outputFile;
    pid_t owner;
};

std::vector<char*> Pointers(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (std::string& string : strings) {
        pointers.push_back(string.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> Variables(const ProgramStart& start) {
    std::vector<std::string> variables;
    for (const auto& [name, value] : start.environment) {
        variables.push_back(name + "=" + value);
    }
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const std::string name = text.substr(0, text.find('='));
        const bool replaced = std::ranges::any_of(
            start.environment, [&](const auto& variable) { return variable.first == name; });
        if (!replaced) {
            variables.push_back(text);
        }
    }
    return variables;
}

void Fill(Command& command, const ProgramStart& start) {
    command.program = start.arguments.front();
    command.words = start.arguments;
    command.arguments = Pointers(command.words);
    command.shellArguments = command.arguments;
    command.shellArguments[0] = command.program.data();
    command.shellArguments.insert(command.shellArguments.begin(), const_cast<char*>(kShell));
    command.variables = Variables(start);
    command.environment = Pointers(command.variables);
    command.outputFile = start.outputFile;
    command.owner = start.owner == 0 ? ::getpid() : static_cast<pid_t>(start.owner);
}

void Report(int descriptor, int value) {
    while (::write(descriptor, &value, sizeof value) < 0 && errno == EINTR) {
    }
}

/// The next report; kLost if none comes any more.
int ReadReport(int descriptor) {
    int value = 0;
    ssize_t count = 0;
    do {
        count = ::read(descriptor, &value, sizeof value);
    } while (count < 0 && errno == EINTR);
    return count == sizeof value ? value : kLost;
}

// --- in the program's process, before it becomes the program ---

void ResetSignals() {
    for (int signal = 1; signal < NSIG; ++signal) {
        ::signal(signal, SIG_DFL);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// 0 or an errno.
int SetStreams(const Command& command) {
    const int input = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (input < 0 || ::dup2(input, STDIN_FILENO) < 0) {
        return errno;
    }
    if (command.outputFile.empty()) {
        return 0;
    }
    const int output = ::open(command.outputFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    const bool isSet =
        output >= 0 && ::dup2(output, STDOUT_FILENO) >= 0 && ::dup2(output, STDERR_FILENO) >= 0;
    return isSet ? 0 : errno;
}

/// Becomes the program. Reports an errno and ends if that fails.
[[noreturn]] void BecomeProgram(const Command& command, int report) {
    ::setpgid(0, 0);
    ResetSignals();
    int error = SetStreams(command);
    if (error == 0) {
        ::execve(command.program.c_str(), command.arguments.data(), command.environment.data());
        error = errno;
    }
    if (error == ENOEXEC && LooksLikeScript(command.program)) {
        ::execve(kShell, command.shellArguments.data(), command.environment.data());
        error = errno;
    }
    Report(report, error);
    ::_exit(1);
}

// --- in the guard ---

/// So that no descriptor opened later takes the number of a standard stream.
void OpenMissingStreams() {
    int lowest = 0;
    do {
        lowest = ::open("/dev/null", O_RDWR);
    } while (lowest >= 0 && lowest <= STDERR_FILENO);
}

void UseNullStreams() {
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(null, stream);
    }
    ::close(null);
}

/// Starts the program; 0 or an errno.
int StartBelowGuard(const Command& command, pid_t& program) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return errno;
    }
    program = ::fork();
    if (program == 0) {
        BecomeProgram(command, ends[1]);
    }
    const int forkError = program < 0 ? errno : 0;
    ::close(ends[1]);
    // The program's end of the pipe closes when it starts, and then there is nothing to read.
    const int error = forkError != 0 ? forkError : ReadReport(ends[0]);
    ::close(ends[0]);
    return error == kLost ? 0 : error;
}

/// Waits for all that has ended; false once nothing is left below the guard.
bool Reap(pid_t program) {
    for (;;) {
        int status = 0;
        const pid_t ended = ::waitpid(-1, &status, WNOHANG);
        if (ended <= 0) {
            return ended == 0;
        }
        if (ended == program) {
            Report(kReportDescriptor, status);
            ::close(kReportDescriptor);
        }
    }
}

void Watch(pid_t program, int owner, int childSignals) {
    for (;;) {
        std::array<pollfd, 2> sources{pollfd{owner, POLLIN, 0}, pollfd{childSignals, POLLIN, 0}};
        ::poll(sources.data(), sources.size(), -1);
        if (sources[0].revents != 0) {
            EndDescendants(::getpid());
            return;
        }
        signalfd_siginfo ignored;
        [[maybe_unused]] const auto count = ::read(childSignals, &ignored, sizeof ignored);
        if (!Reap(program)) {
            return;
        }
    }
}

/// The life of a guard. All signals are blocked in it.
[[noreturn]] void Guard(const Command& command, int report) {
    ::setpgid(0, 0);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    // Nothing that the run has open may stay open here: not a lock, and not the pipe of another guard.
    ::dup3(report, kReportDescriptor, O_CLOEXEC);
    OpenMissingStreams();
    ::syscall(SYS_close_range, kReportDescriptor + 1, ~0U, 0);
    sigset_t children;
    ::sigemptyset(&children);
    ::sigaddset(&children, SIGCHLD);
    const int childSignals = ::signalfd(-1, &children, SFD_CLOEXEC | SFD_NONBLOCK);
    const auto owner = static_cast<int>(::syscall(SYS_pidfd_open, command.owner, 0));
    pid_t program = 0;
    const int error = childSignals < 0 || owner < 0 ? errno : StartBelowGuard(command, program);
    Report(kReportDescriptor, error);
    if (error == 0) {
        UseNullStreams();
        Watch(program, owner, childSignals);
    }
    ::_exit(0);
}

// --- in the run ---

std::string MissingInterpreter(const std::string& program) {
    std::ifstream file(program, std::ios::binary);
    std::string line;
    std::getline(file, line);
    if (!line.starts_with("#!")) {
        return {};
    }
    const std::size_t begin = std::min(line.find_first_not_of(" \t", 2), line.size());
    return line.substr(begin, line.find_first_of(" \t", begin) - begin);
}

std::string WhyNotStarted(int error, const std::string& program) {
    struct stat found = {};
    if (error == ENOENT && ::stat(program.c_str(), &found) == 0) {
        const std::string interpreter = MissingInterpreter(program);
        return program + " cannot be started: its interpreter " +
               (interpreter.empty() ? "is missing" : interpreter + " does not exist");
    }
    switch (error) {
        case ENOENT:
            return program + " does not exist";
        case EACCES:
            return program + " cannot be started: the file or its interpreter is not executable";
        case ENOEXEC:
            return program + " is not a program that this system can run";
        case kLost:
            return program + " cannot be started: the system ended its guard process";
        default:
            return program + " cannot be started: " + std::generic_category().message(error);
    }
}

/// Forks a guard for the program. 0 or an errno; `reports` is where it reports.
int ForkGuard(const Command& command, Descriptor& reports) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return errno;
    }
    reports = Descriptor(ends[0]);
    const Descriptor report(ends[1]);
    // No handler of the run may run in the guard.
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t guard = ::fork();
    if (guard == 0) {
        Guard(command, report.Number());
    }
    const int error = guard < 0 ? errno : 0;
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return error;
}

ProgramEnd EndFromStatus(int status) {
    ProgramEnd end;
    if (status == kLost) {
        end.signal = SIGKILL;
    } else if (WIFSIGNALED(status)) {
        end.signal = WTERMSIG(status);
    } else {
        end.exitCode = WEXITSTATUS(status);
    }
    return end;
}

}  // namespace

StartedProgram StartProgram(const ProgramStart& start) {
    Command command;
    Fill(command, start);
    Descriptor reports;
    int error = ForkGuard(command, reports);
    if (error == 0) {
        error = ReadReport(reports.Number());
    }
    StartedProgram started;
    if (error == 0) {
        started.handle = reports.Detach();
    } else {
        started.notStarted = WhyNotStarted(error, command.program);
    }
    return started;
}

ProgramEnd WaitForProgram(StartedProgram& program) {
    return *WaitForProgram(program, std::chrono::milliseconds(-1));
}

std::optional<ProgramEnd> WaitForProgram(StartedProgram& program, std::chrono::milliseconds limit) {
    if (program.handle < 0) {
        return ProgramEnd{program.notStarted, 0, 0};
    }
    pollfd source{static_cast<int>(program.handle), POLLIN, 0};
    if (limit.count() >= 0 && ::poll(&source, 1, static_cast<int>(limit.count())) <= 0) {
        return std::nullopt;
    }
    const Descriptor reports(static_cast<int>(std::exchange(program.handle, -1)));
    return EndFromStatus(ReadReport(reports.Number()));
}

void OwnStartedPrograms() {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
}

void EndStartedPrograms() {
    EndDescendants(::getpid());
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
}

void EndWithStarter() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
}

std::int64_t ProcessId() {
    return ::getpid();
}

}  // namespace ventrix::platform
