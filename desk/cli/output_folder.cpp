#include "desk/cli/output_folder.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "desk/cli/paths.h"
#include "platform/drives.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

/// The folders that are never emptied: the root, the home folders of all users, and the roots of all
/// drives.
std::vector<fs::path> ProtectedFolders() {
    std::vector<fs::path> folders{"/"};
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        folders.push_back(RealPath(home));
    }
    setpwent();
    while (const passwd* user = getpwent()) {
        folders.push_back(RealPath(user->pw_dir));
    }
    endpwent();
    for (const platform::Drive& drive : platform::ProcessDrives()) {
        folders.push_back(RealPath(drive.folder));
    }
    return folders;
}

}  // namespace

std::string OutputMarkName(const std::string& folder) {
    return (fs::path(folder) / ".ventrix-result").string();
}

std::string OutputRefusal(const std::string& folder, const std::vector<std::string>& inputs, bool force) {
    std::error_code error;
    const fs::path real = RealPath(folder);
    if (fs::exists(real, error) && !fs::is_directory(real, error)) {
        return "is not a folder";
    }
    for (const fs::path& kept : ProtectedFolders()) {
        if (IsBelowOrEqual(kept, real)) {
            return "is or contains a home folder or a root folder; choose a separate folder for the result";
        }
    }
    for (const std::string& input : inputs) {
        if (!input.empty() && IsBelowOrEqual(RealPath(input), real)) {
            return "contains " + input + ", which would be deleted; choose a separate folder for the result";
        }
    }
    if (!force && fs::is_directory(real, error) && !fs::is_empty(real, error) &&
        !fs::exists(OutputMarkName(folder), error)) {
        return "is not empty and was not created by an earlier run; use --force to empty it";
    }
    return {};
}

std::string PrepareOutput(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        return "cannot be created: " + error.message();
    }
    if (access(folder.c_str(), W_OK | X_OK) != 0) {
        return "is not writable";
    }
    return {};
}

void MarkOutput(const char* markName) {
    const int file = open(markName, O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (file >= 0) {
        close(file);
    }
}

}  // namespace ventrix::desk
