#include <unicode/putil.h>

#include <string>

#include "bridge/connection.h"
#include "bridge/contract/host_interfaces.h"
#include "bridge/host/operations.h"
#include "kit/last_error.h"
#include "kit/text/encodings.h"
#include "kit/text/strings.h"
#include "platform/drives.h"

namespace ventrix {
namespace {

constexpr std::size_t kFolderSize = 1024;

// Empty when the host can't name it, and when it is too long: a cut text would name another folder.
std::string HostInstallationFolder() {
    const Q_String text(Q_ApiReadStringPropNum(0, 0, kInstallationFolderProperty));
    const std::string folder = text == nullptr ? "" : text.get();
    return Q_ApiLastError != 0 || folder.size() >= kFolderSize ? "" : folder;
}

// ICU opens files by the machine's own notation. A folder on no known drive is told as it stands.
void SetDataFolder(const std::string& folder) {
    const std::string native = platform::ToNative(folder);
    u_setDataDirectory(native.empty() ? folder.c_str() : native.c_str());
}

}  // namespace

std::int32_t Q_ApiRuntimeSetup() {
    if (!Q_EncodingsReady()) {
        Q_SetEncoding("QuorlRoman");
    }
    connection.kitReady = true;
    const char* dataFolder = u_getDataDirectory();
    if (dataFolder != nullptr && *dataFolder != '\0') {
        return 0;
    }
    const std::string folder = HostInstallationFolder();
    if (folder.empty()) {
        return 1;
    }
    SetDataFolder(folder + "\\icu_data");
    return 0;
}

}  // namespace ventrix
