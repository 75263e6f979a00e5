#include "desk/cli/output_folder.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "platform/drives.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

/// The folders that are never emptied: the root, the home folders of all users, and the roots of all
/// drives.
std::vector<NativePath> ProtectedFolders() {
    std::vector<NativePath> folders{{"/"}};
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        folders.push_back(RealPath({home}));
    }
    setpwent();
    while (const passwd* user = getpwent()) {
        folders.push_back(RealPath({user->pw_dir}));
    }
    endpwent();
    for (const platform::Drive& drive : platform::ProcessDrives()) {
        folders.push_back(RealPath({drive.folder}));
    }
    return folders;
}

}  // namespace

NativePath OutputMarkName(const NativePath& folder) {
    return FromFilesystem(ToFilesystem(folder) / ".ventrix-result");
}

std::string OutputRefusal(const NativePath& folder, const std::vector<NativePath>& inputs, bool force) {
    std::error_code error;
    const NativePath real = RealPath(folder);
    const fs::path realFolder = ToFilesystem(real);
    if (fs::exists(realFolder, error) && !fs::is_directory(realFolder, error)) {
        return "is not a folder";
    }
    for (const NativePath& kept : ProtectedFolders()) {
        if (IsBelowOrEqual(kept, real)) {
            return "is or contains a home folder or a root folder; choose a separate folder for the result";
        }
    }
    for (const NativePath& input : inputs) {
        if (!input.Empty() && IsBelowOrEqual(RealPath(input), real)) {
            return "contains " + input.utf8 +
                   ", which would be deleted; choose a separate folder for the result";
        }
    }
    if (!force && fs::is_directory(realFolder, error) && !fs::is_empty(realFolder, error) &&
        !fs::exists(ToFilesystem(OutputMarkName(folder)), error)) {
        return "is not empty and was not created by an earlier run; use --force to empty it";
    }
    return {};
}

std::string PrepareOutput(const NativePath& folder) {
    std::error_code error;
    fs::create_directories(ToFilesystem(folder), error);
    if (error) {
        return "cannot be created: " + error.message();
    }
    if (access(folder.utf8.c_str(), W_OK | X_OK) != 0) {
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
