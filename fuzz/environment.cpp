#include "fuzz/environment.h"

#include <unicode/putil.h>

#include <fstream>
#include <map>

#include "kit/text/encodings.h"
#include "platform/drives.h"
#include "platform/temp_files.h"

namespace ventrix::fuzz {

void PrepareProcess() {
    [[maybe_unused]] static const bool prepared = [] {
        u_setDataDirectory(VENTRIX_ICU_DATA);
        platform::SetProcessDrives({{R"(Z:\)", "/"}});
        return Q_SetEncoding("UTF-8") != 0;
    }();
}

std::string TempFileWith(const std::string& name, std::string_view content) {
    static std::map<std::string, std::string> paths;
    std::string& path = paths[name];
    if (path.empty()) {
        path = platform::MakeTempFile(platform::TempFolder(), "vx");
    }
    std::ofstream(platform::ToNative(path), std::ios::binary) << content;
    return path;
}

}  // namespace ventrix::fuzz
