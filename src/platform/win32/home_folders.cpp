#include "platform/home_folders.h"

#include "platform/environment.h"
#include "platform/win32/system_calls.h"

namespace fs = std::filesystem;

namespace ventrix::platform {

// The home folders of the accounts lie beside each other.
std::vector<fs::path> HomeFolders() {
    std::vector<fs::path> folders;
    const auto home = EnvironmentValue("USERPROFILE");
    if (!home || home->empty()) {
        return folders;
    }
    folders.emplace_back(Wide(*home));
    std::error_code error;
    for (fs::directory_iterator entry(folders.front().parent_path(), error);
         !error && entry != fs::directory_iterator(); entry.increment(error)) {
        folders.push_back(entry->path());
    }
    return folders;
}

}  // namespace ventrix::platform
