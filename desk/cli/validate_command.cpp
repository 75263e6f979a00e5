#include <unistd.h>

#include <filesystem>
#include <optional>

#include "bridge/contract/request.h"
#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/path_options.h"
#include "desk/cli/request_text.h"
#include "desk/cli/run_log.h"
#include "desk/cli/session.h"

namespace ventrix::desk {
namespace {

/// The module reports its findings only in a log, so without --log a run writes one to a temporary file.
class TemporaryLog {
  public:
    TemporaryLog() {
        const NativePath folder = FromFilesystem(std::filesystem::temp_directory_path());
        path_ = {folder.utf8 + "/ventrix-log-XXXXXX"};
        const int file = mkstemp(path_.utf8.data());
        if (file < 0) {
            throw Stop{kExitNoModule, "cannot create a temporary file in " + folder.utf8};
        }
        close(file);
    }
    ~TemporaryLog() { unlink(path_.utf8.c_str()); }
    TemporaryLog(const TemporaryLog&) = delete;
    TemporaryLog& operator=(const TemporaryLog&) = delete;

    const NativePath& Path() const { return path_; }

  private:
    NativePath path_;
};

void ShowSection(const Screen& screen, const char* title, const std::vector<NativePath>& paths) {
    if (paths.empty()) {
        return;
    }
    screen.Result(std::string(title) + " (" + std::to_string(paths.size()) + ")");
    for (const NativePath& path : paths) {
        screen.Result("  " + path.utf8);
    }
}

std::string Summary(std::int32_t mask) {
    std::string text;
    const auto add = [&](std::int32_t bit, const char* problem) {
        if ((mask & bit) != 0) {
            text += (text.empty() ? "" : "; ") + std::string(problem);
        }
    };
    add(kValidateBroken, "files are missing or unreadable");
    add(kValidateUnsaved, "files have unsaved changes");
    add(kValidateOnSeveralRoots, "the files are on several drives and cannot be packaged");
    return mask == 0 ? "can be published" : text + " (mask " + std::to_string(mask) + ")";
}

void Show(const Screen& screen, const RunLog& log, std::int32_t mask) {
    ShowSection(screen, "valid", log.valid);
    ShowSection(screen, "missing or unreadable", log.broken);
    ShowSection(screen, "unsaved", log.unsaved);
    if (log.graphicsOnOtherDrive) {
        screen.Warning("some graphics are on a different drive from the document and would not be packaged");
    }
    screen.Result(Summary(mask));
}

}  // namespace

int Validate(const Options& options, const Screen& screen, RunReport& report) {
    const auto session = StartSession(options.common, screen, report);
    std::optional<TemporaryLog> temporary;
    NativePath logName = AbsolutePath({options.common.log});
    if (logName.Empty()) {
        logName = temporary.emplace().Path();
    }
    RequireLog(logName, LocalFiles(session->files));
    const std::uint64_t before = LogSize(logName);
    const Reply reply = Send(*session, ValidateRequest(session->documentId, RequireSystemPath(logName)));
    if (reply.status < 0) {
        throw Stop{kExitRefused, "the module refused the request"};
    }
    if (reply.status == kValidateWithoutLog) {
        throw Stop{kExitRefused, "the log cannot be written: " + logName.utf8};
    }
    const RunLog log = ReadRunLog(LogFrom(logName, before));
    report.status = reply.status;
    report.log = AbsolutePath({options.common.log});
    report.valid = log.valid;
    report.missing = log.broken;
    report.unsaved = log.unsaved;
    Show(screen, log, reply.status);
    return reply.status == 0 && report.warnings.empty() ? kExitDone : kExitFindings;
}

}  // namespace ventrix::desk
