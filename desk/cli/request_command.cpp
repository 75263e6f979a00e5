#include <cstdint>
#include <optional>
#include <vector>

#include "bridge/contract/request.h"
#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/file_findings.h"
#include "desk/cli/protected_output.h"
#include "desk/cli/request_text.h"
#include "desk/cli/run_log.h"
#include "desk/cli/session.h"

namespace ventrix::desk {
namespace {

/// The folder that the module empties for this request, without a closing slash; empty if the request names
/// none. A request has no option such as --force, so other files in the folder are always kept.
NativePath OutputFolderOf(const std::string& request) {
    const std::string folder =
        IsRequest(request, kPublishCommand) ? RequestOption(request, kOutputFolderOption) : std::string();
    const NativePath path = ToNative(SystemPath{folder});
    return path.Empty() ? path : AbsolutePath(path);
}

/// Throws Stop if the reply says that the request was not carried out.
void RequireSuccess(const std::string& request, const Reply& reply, const TransformationRecord& record) {
    if (reply.status == kRequestRefused) {
        throw Stop{kExitRefused,
                   "the module refused the request; check its command, document id and required options"};
    }
    if (IsRequest(request, kValidateCommand) && reply.status == kValidateWithoutLog) {
        throw Stop{kExitRefused, "the module could not write its log; add -logFile to the request"};
    }
    if (!IsRequest(request, kPublishCommand)) {
        return;
    }
    if (reply.first.empty()) {
        throw Stop{kExitRefused, "packaging failed; see the log that the request names"};
    }
    if (record.failed > 0) {
        throw Stop{kExitTransformation, "the transformation failed: " + record.reason};
    }
}

/// The log that the request names, where it ended before the run.
struct RequestLog {
    NativePath path;  ///< Empty if the request names none.
    std::uint64_t start = 0;
};

RequestLog LogOf(const std::string& request) {
    const NativePath path = ToNative(SystemPath{RequestOption(request, kLogFileOption)});
    return {path, path.Empty() ? 0 : LogSize(path)};
}

/// Reports the files that a Publish could not read.
void ReportFiles(const DocumentFiles& files, const RequestLog& log, RunReport& report, const Screen& screen) {
    report.missing = MissingFiles(files);
    std::vector<Finding> findings = MissingReferences(files, report.missing);
    if (!log.path.Empty()) {
        const RunLog run = ReadRunLog(LogFrom(log.path, log.start));
        report.failed = run.failed;
        AddFailedFiles(run.failed, findings);
    }
    for (const Finding& finding : findings) {
        Warn(report, screen, finding);
    }
}

}  // namespace

int Request(const Options& options, const Screen& screen, RunReport& report) {
    const auto session = StartSession(options.common, screen, report);
    const std::string request = FillDocumentId(options.requestText, session->documentId);
    const NativePath folder = OutputFolderOf(request);
    std::optional<ProtectedOutput> output;
    if (!folder.Empty()) {
        session->access.outputFolder = folder;
        output.emplace(OutputOrder{.folder = ToFilesystem(folder),
                                   .inputs = InputPaths(LocalFiles(session->files)),
                                   .force = true,
                                   .request = request,
                                   .version = kVersion},
                       report, screen);
    }
    const RequestLog log = LogOf(request);
    const Reply reply = Send(*session, request);
    report.status = reply.status;
    report.reply = {reply.first, reply.second};
    screen.Result("status: " + std::to_string(reply.status));
    screen.Result("first:  " + reply.first);
    screen.Result("second: " + reply.second);
    try {
        RequireSuccess(request, reply, session->record);
    } catch (...) {
        if (output) {
            output->RollBack();
        }
        throw;
    }
    if (output) {
        ReportFiles(session->files, log, report, screen);
    }
    const int status = output ? output->Settle(kExitDone) : kExitDone;
    return status == kExitDone && (reply.status != 0 || !report.warnings.empty()) ? kExitFindings : status;
}

}  // namespace ventrix::desk
