#include "platform/program.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace ventrix::platform {

std::string ProgramFile() {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : file.string();
}

bool IsExecutable(const std::string& file) {
    return ::access(file.c_str(), X_OK) == 0;
}

std::string HowToMakeExecutable() {
    return "run chmod +x on it";
}

}  // namespace ventrix::platform
