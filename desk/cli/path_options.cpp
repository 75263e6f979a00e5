#include "desk/cli/path_options.h"

#include <filesystem>

#include "desk/cli/exit_status.h"
#include "desk/toolkit/ditaval.h"
#include "platform/file_identity.h"
#include "platform/program.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

bool IsSameFile(const NativePath& a, const NativePath& b) {
    const auto identity = platform::IdentityOf(ToFilesystem(a));
    return RealPath(a) == RealPath(b) || (identity && identity == platform::IdentityOf(ToFilesystem(b)));
}

}  // namespace

SystemPath RequireSystemPath(const NativePath& path) {
    const NativePath absolute = AbsolutePath(path);
    if (const std::string why = WhyUnnameable(absolute); !why.empty()) {
        throw Stop{kExitUsage, path.utf8 + ": " + why};
    }
    const auto system = ToSystem(absolute);
    if (!system) {
        throw Stop{kExitUsage, path.utf8 + " is not on a mapped drive; map one with --drive"};
    }
    return *system;
}

void RequireFile(const char* option, const NativePath& file) {
    std::error_code error;
    if (!file.Empty() && !fs::is_regular_file(ToFilesystem(file), error)) {
        throw Stop{kExitUsage, std::string(option) + ": " + file.utf8 + " is not a readable file"};
    }
}

std::vector<NativePath> RequiredFiles(const char* option, const std::vector<std::string>& files) {
    std::vector<NativePath> paths;
    for (const std::string& file : files) {
        RequireFile(option, {file});
        paths.push_back(AbsolutePath({file}));
    }
    return paths;
}

void RequireFilters(const std::vector<NativePath>& filters) {
    for (const NativePath& filter : filters) {
        std::string reason;
        if (!ReadDitaval(filter, reason)) {
            throw Stop{kExitUsage, "--ditaval: cannot use " + reason};
        }
    }
}

void RequireProgram(const char* option, const NativePath& file) {
    RequireFile(option, file);
    if (!file.Empty() && !platform::IsExecutable(file.utf8)) {
        throw Stop{kExitUsage, std::string(option) + ": " + file.utf8 + " is not executable; " +
                                   platform::HowToMakeExecutable()};
    }
}

void RequireNoInput(const char* option, const NativePath& file, const std::vector<NativePath>& inputs) {
    for (const NativePath& input : inputs) {
        if (!file.Empty() && IsSameFile(file, input)) {
            throw Stop{kExitUsage, std::string(option) + ": " + file.utf8 +
                                       " is an input of this run; choose another file"};
        }
    }
}

bool IsNullDevice(const NativePath& path) {
    const auto identity = platform::IdentityOf(ToFilesystem(path));
    return identity && identity == platform::IdentityOf("/dev/null");
}

void RequireLog(const NativePath& log, const std::vector<NativePath>& inputs) {
    std::error_code error;
    const fs::file_status status = fs::status(ToFilesystem(log), error);
    if (fs::is_directory(status)) {
        throw Stop{kExitUsage, "--log: " + log.utf8 + " is a folder; choose a file in it"};
    }
    if (fs::exists(status) && !fs::is_regular_file(status) && !IsNullDevice(log)) {
        throw Stop{kExitUsage, "--log: " + log.utf8 + " is a pipe or a device; choose a file"};
    }
    RequireNoInput("--log", log, inputs);
}

}  // namespace ventrix::desk
