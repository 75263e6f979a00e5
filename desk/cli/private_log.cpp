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
    std::string text = LogFrom(path_, 0);
    if (text.size() != LogSize(path_)) {
        throw Stop{kExitNoModule, path_.utf8 + " cannot be read; set TMPDIR to a folder on another disk"};
    }
    return text;
}

std::string PrivateLog::AppendTo(const NativePath& log) {
    const std::string text = LogFrom(path_, 0);
    if (text.size() != LogSize(path_)) {
        folder_.Keep();
        return "the log of this run cannot be read: " + path_.utf8;
    }
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

void DeliverLog(PrivateLog& log, const NativePath& userLog, RunReport& report, const Screen& screen) {
    const std::string problem = log.AppendTo(userLog);
    report.log = problem.empty() ? userLog : log.Path();
    if (!problem.empty()) {
        Warn(report, screen, {{}, 0, "log", problem});
    }
}

}  // namespace ventrix::desk
