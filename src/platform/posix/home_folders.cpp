#include "platform/home_folders.h"

#include <pwd.h>

#include "platform/environment.h"

namespace ventrix::platform {

std::vector<std::filesystem::path> HomeFolders() {
    std::vector<std::filesystem::path> folders;
    if (const auto home = EnvironmentValue("HOME"); home && !home->empty()) {
        folders.emplace_back(*home);
    }
    ::setpwent();
    while (const passwd* user = ::getpwent()) {
        folders.emplace_back(user->pw_dir);
    }
    ::endpwent();
    return folders;
}

}  // namespace ventrix::platform
