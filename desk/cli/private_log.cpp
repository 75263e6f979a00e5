#include "desk/cli/private_log.h"

#include <fstream>

#include "desk/cli/exit_status.h"
#include "desk/cli/path_options.h"
#include "desk/cli/run_log.h"

namespace ventrix::desk {

PrivateLog::PrivateLog() : folder_("ventrix-log") {
    if (folder_.Path().empty()) {
        throw Stop{kExitNoModule, folder_.Problem()};
    }
    path_ = {folder_.Path() + "/report.log"};
}

std::string PrivateLog::Text() const {
    return LogFrom(path_, 0);
}

std::string PrivateLog::AppendTo(const NativePath& log) {
    const std::string text = Text();
    if (log.Empty() || text.empty() || IsNullDevice(log)) {
        return {};
    }
    std::ofstream file(ToFilesystem(log), std::ios::binary | std::ios::app);
    file << text << std::flush;
    if (file) {
        return {};
    }
    folder_.Keep();
    return log.utf8 + " cannot be written; the log of this run is " + path_.utf8;
}

}  // namespace ventrix::desk
