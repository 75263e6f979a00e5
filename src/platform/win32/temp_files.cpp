#include "platform/temp_files.h"

#include "platform/drives.h"
#include "platform/win32/system_calls.h"

namespace ventrix::platform {

// The host's contract names the narrow calls here: paths are in the system's 8-bit encoding.

std::string TempFolder() {
    char folder[MAX_PATH + 1];
    const ::DWORD length = ::GetTempPathA(sizeof folder, folder);
    return length == 0 || length > MAX_PATH ? std::string()
                                            : ToSystem(std::string_view(folder, length)).value_or("");
}

std::string MakeTempFile(std::string_view folder, std::string_view prefix) {
    char file[MAX_PATH];
    if (::GetTempFileNameA(ToNative(folder).c_str(), std::string(prefix.substr(0, 3)).c_str(), 0, file) ==
        0) {
        return {};
    }
    return ToSystem(file).value_or("");
}

}  // namespace ventrix::platform
