#include "platform/temp_files.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "platform/drives.h"
#include "platform/environment.h"
#include "platform/posix/descriptor.h"

namespace ventrix::platform {
namespace {

constexpr int kNameAttempts = 100;

std::string RandomDigits() {
    std::uint32_t number = 0;
    if (::getrandom(&number, sizeof number, 0) != sizeof number) {
        number = static_cast<std::uint32_t>(::getpid());
    }
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08X", number);
    return digits;
}

}  // namespace

std::string TempFolder() {
    const std::string set = EnvironmentValue("TMPDIR").value_or("");
    std::string folder = ToSystem(set.empty() ? "/tmp" : set).value_or("");
    if (!folder.empty() && folder.back() != '\\') {
        folder += '\\';
    }
    return folder;
}

std::string MakeTempFile(std::string_view folder, std::string_view prefix) {
    std::string start(folder);
    if (!start.empty() && start.back() != '\\') {
        start += '\\';
    }
    start += prefix.substr(0, 3);
    for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
        std::string path = start + RandomDigits() + ".tmp";
        const Descriptor file(::open(ToNative(path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (file.IsOpen()) {
            return path;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return {};
}

}  // namespace ventrix::platform
