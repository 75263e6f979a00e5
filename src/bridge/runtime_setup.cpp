#include "bridge/runtime_setup.h"

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

// Empty if the host cannot name it, or if it is too long: a truncated path would name another folder. An
// error of an earlier operation counts as well, since success does not clear the error value.
std::string HostInstallationFolder() {
    const Q_String text(Q_ApiReadStringPropNum(0, 0, kInstallationFolderProperty));
    const std::string folder = text == nullptr ? "" : text.get();
    return Q_ApiLastError != 0 || folder.size() >= kFolderSize ? "" : folder;
}

// ICU opens files itself, so it needs a native path. A folder that is not on a mapped drive is passed on
// unchanged.
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
