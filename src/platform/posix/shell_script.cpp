#include "platform/posix/shell_script.h"

#include <fcntl.h>
#include <unistd.h>

#include <string_view>

#include "platform/posix/descriptor.h"

namespace ventrix::platform {

bool LooksLikeScript(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    char start[128];
    const ssize_t count = file.IsOpen() ? ::read(file.Number(), start, sizeof start) : 0;
    const std::string_view bytes(start, count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0 && bytes.substr(0, bytes.find('\n')).find('\0') == std::string_view::npos;
}

}  // namespace ventrix::platform
