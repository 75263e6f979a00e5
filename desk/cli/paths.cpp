#include "desk/cli/paths.h"

#include <unistd.h>

#include "desk/cli/exit_status.h"
#include "desk/xml/reference_path.h"
#include "platform/drives.h"

namespace fs = std::filesystem;

namespace ventrix::desk {

std::string AbsolutePath(const std::string& path) {
    if (path.empty()) {
        return path;
    }
    const fs::path absolute = fs::absolute(path);
    const fs::path normal = absolute.lexically_normal();
    // Behind a link, ".." leads elsewhere than its text says.
    return (RealPath(absolute) == RealPath(normal) ? normal : RealPath(absolute)).string();
}

std::string SystemPath(const std::string& path) {
    const std::string absolute = AbsolutePath(path);
    if (const std::string why = WhyUnnameable(absolute); !why.empty()) {
        throw Stop{kExitUsage, path + ": " + why};
    }
    const auto system = platform::ToSystem(absolute);
    if (!system) {
        throw Stop{kExitUsage, path + ": no drive reaches this place; --drive gives it one"};
    }
    return *system;
}

fs::path RealPath(const fs::path& path) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(path, error);
    return error ? path.lexically_normal() : real;
}

bool IsBelowOrEqual(const fs::path& path, const fs::path& folder) {
    const fs::path relative = path.lexically_relative(folder);
    return !relative.empty() && *relative.begin() != "..";
}

void RequireFile(const char* option, const std::string& file) {
    std::error_code error;
    if (!file.empty() && !fs::is_regular_file(file, error)) {
        throw Stop{kExitUsage, std::string(option) + ": " + file + " is not a readable file"};
    }
}

void RequireProgram(const char* option, const std::string& file) {
    RequireFile(option, file);
    if (!file.empty() && access(file.c_str(), X_OK) != 0) {
        throw Stop{kExitUsage, std::string(option) + ": " + file + " is not executable; run chmod +x on it"};
    }
}

void RequireNoInput(const char* option, const std::string& file, const std::vector<std::string>& inputs) {
    for (const std::string& input : inputs) {
        if (!file.empty() && RealPath(file) == RealPath(input)) {
            throw Stop{kExitUsage,
                       std::string(option) + ": " + file + " is an input of this run; choose another file"};
        }
    }
}

void RequireLog(const std::string& log, const std::vector<std::string>& inputs) {
    std::error_code error;
    if (fs::is_directory(log, error)) {
        throw Stop{kExitUsage, "--log: " + log + " is a folder; choose a file in it"};
    }
    RequireNoInput("--log", log, inputs);
}

}  // namespace ventrix::desk
