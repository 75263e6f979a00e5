#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "bridge/contract/request.h"
#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/paths.h"
#include "desk/cli/request_text.h"
#include "desk/cli/run_log.h"
#include "desk/cli/session.h"

namespace ventrix::desk {
namespace {

/// The module reports its findings only in a log, so without --log a run writes one to a temporary file.
class TemporaryLog {
  public:
    TemporaryLog() {
        name_ = (std::filesystem::temp_directory_path() / "ventrix-log-XXXXXX").string();
        const int file = mkstemp(name_.data());
        if (file < 0) {
            throw Stop{kExitNoModule, "cannot create a temporary file in " +
                                          std::filesystem::temp_directory_path().string()};
        }
        close(file);
    }
    ~TemporaryLog() { unlink(name_.c_str()); }
    TemporaryLog(const TemporaryLog&) = delete;
    TemporaryLog& operator=(const TemporaryLog&) = delete;

    const std::string& Name() const { return name_; }

  private:
    std::string name_;
};

void ShowSection(const Screen& screen, const char* title, const std::vector<std::string>& paths) {
    if (paths.empty()) {
        return;
    }
    screen.Result(std::string(title) + " (" + std::to_string(paths.size()) + ")");
    for (const std::string& path : paths) {
        screen.Result("  " + path);
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

int Validate(const Options& options, const Screen& screen) {
    const auto session = StartSession(options.common, screen);
    std::optional<TemporaryLog> temporary;
    std::string logName = AbsolutePath(options.common.log);
    if (logName.empty()) {
        logName = temporary.emplace().Name();
    }
    RequireLog(logName, LocalFiles(session->files));
    const std::uint64_t before = LogSize(logName);
    const Reply reply = Send(*session, ValidateRequest(session->documentId, SystemPath(logName)));
    if (reply.status < 0) {
        throw Stop{kExitRefused, "the module refused the request"};
    }
    if (reply.status == kValidateWithoutLog) {
        throw Stop{kExitRefused, "the log cannot be written: " + logName};
    }
    const RunLog log = ReadRunLog(LogFrom(logName, before));
    if (screen.Json()) {
        PrintObject(
            {{"mask", reply.status}, {"valid", log.valid}, {"broken", log.broken}, {"unsaved", log.unsaved}});
    } else {
        Show(screen, log, reply.status);
    }
    return reply.status == 0 && session->files.remarks.empty() ? kExitDone : kExitFindings;
}

}  // namespace ventrix::desk
