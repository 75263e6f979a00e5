#include "platform/temp_folder.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/environment.h"

namespace fs = std::filesystem;

namespace ventrix::platform {

TemporaryFolder::TemporaryFolder(const std::string& prefix) : cleanUp_([this] { Remove(); }) {
    const std::string set = EnvironmentValue("TMPDIR").value_or("");
    std::error_code error;
    const fs::path parent = fs::absolute(set.empty() ? "/tmp" : set, error);
    std::string pattern = (parent / (prefix + "-XXXXXX")).string();
    const InterruptionPause pause;  // The folder is removed by name, which comes with it.
    if (::mkdtemp(pattern.data()) == nullptr) {
        const int reason = errno;
        problem_ = "no folder for temporary files can be made in " + parent.string() + ": " +
                   std::generic_category().message(reason) + "; set TMPDIR to one that can be written";
        return;
    }
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    if (const std::error_code error = Remove()) {
        std::fprintf(stderr, "warning: the temporary folder %s cannot be removed: %s\n", path_.c_str(),
                     error.message().c_str());
    }
}

std::error_code TemporaryFolder::Remove() const {
    std::error_code error;
    if (!path_.empty() && !kept_) {
        fs::remove_all(path_, error);
    }
    return error;
}

}  // namespace ventrix::platform
