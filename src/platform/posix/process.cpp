#include "platform/process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include "platform/command_line.h"
#include "platform/environment.h"
#include "platform/posix/errno_codes.h"
#include "platform/posix/shell_script.h"

namespace ventrix::platform {
namespace {

constexpr int kSignalExitBase = 128;

/// What a started program inherits.
class SpawnSettings {
  public:
    SpawnSettings() {
        ::posix_spawn_file_actions_init(&files_);
        ::posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addclosefrom_np(&files_, STDERR_FILENO + 1);
        ::posix_spawnattr_init(&attributes_);
        // Blocked and ignored signals would be inherited; a script that writes to a closed pipe has to end.
        sigset_t none;
        sigset_t pipe;
        ::sigemptyset(&none);
        ::sigemptyset(&pipe);
        ::sigaddset(&pipe, SIGPIPE);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setsigdefault(&attributes_, &pipe);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        ::posix_spawn_file_actions_destroy(&files_);
        ::posix_spawnattr_destroy(&attributes_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    const posix_spawn_file_actions_t* Files() const { return &files_; }
    const posix_spawnattr_t* Attributes() const { return &attributes_; }

  private:
    posix_spawn_file_actions_t files_;
    posix_spawnattr_t attributes_;
};

bool IsFile(const std::string& path) {
    struct stat found = {};
    return ::stat(path.c_str(), &found) == 0 && !S_ISDIR(found.st_mode);
}

std::string LocateProgram(const std::string& program) {
    if (program.find('/') != std::string::npos) {
        return program;
    }
    std::string here = "./" + program;
    if (IsFile(here)) {
        return here;
    }
    std::string found = FindInPath(program);
    return found.empty() ? program : found;
}

/// 0 or an errno.
int Spawn(const std::string& file, std::vector<std::string>& arguments, pid_t& id) {
    static const SpawnSettings settings;
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    return ::posix_spawn(&id, file.c_str(), settings.Files(), settings.Attributes(), pointers.data(),
                         environ);
}

int SpawnInShell(const std::string& script, std::vector<std::string> arguments, pid_t& id) {
    arguments[0] = script;
    arguments.insert(arguments.begin(), kShell);
    return Spawn(kShell, arguments, id);
}

}  // namespace

std::string FindInPath(const std::string& name) {
    const std::string folders = EnvironmentValue("PATH").value_or("/usr/bin:/bin");
    for (std::size_t at = 0; at <= folders.size();) {
        const std::size_t end = std::min(folders.find(':', at), folders.size());
        const std::string folder = folders.substr(at, end - at);
        std::string candidate = (folder.empty() ? "." : folder) + "/" + name;
        if (IsFile(candidate) && ::access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
        at = end + 1;
    }
    return {};
}

ErrorCode StartProcess(std::string_view commandLine, ProcessHandle& process) {
    process = {};
    std::vector<std::string> arguments = NativeArguments(ProcessDrives(), SplitCommandLine(commandLine));
    if (arguments.empty()) {
        return kErrorInvalidParameter;
    }
    const std::string program = LocateProgram(arguments[0]);
    struct stat found = {};
    if (::stat(program.c_str(), &found) != 0) {
        return ErrorFromErrno(errno, program);
    }
    pid_t id = 0;
    int error = Spawn(program, arguments, id);
    if (error == ENOEXEC && LooksLikeScript(program)) {
        error = SpawnInShell(program, std::move(arguments), id);
    }
    if (error == 0) {
        process.id = id;
    }
    return ErrorFromErrno(error);
}

int WaitForProcess(ProcessHandle& process) {
    const auto id = static_cast<pid_t>(std::exchange(process.id, 0));
    int status = 0;
    if (id == 0) {
        return -1;
    }
    while (::waitpid(id, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFSIGNALED(status) ? kSignalExitBase + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace ventrix::platform
