#include "bridge/contract/request.h"
#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/request_text.h"
#include "desk/cli/session.h"

namespace ventrix::desk {
namespace {

/// Throws Stop if the reply says that the request was not carried out.
void RequireSuccess(const std::string& request, const Reply& reply, const TransformationRecord& record) {
    if (reply.status == kRequestRefused) {
        throw Stop{kExitRefused,
                   "the module refused the request; check its command, document id and required options"};
    }
    if (IsRequest(request, kValidateCommand) && reply.status == kValidateWithoutLog) {
        throw Stop{kExitRefused, "the module could not write its log; give the request a -logFile"};
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

}  // namespace

int Request(const Options& options, const Screen& screen, RunReport& report) {
    const auto session = StartSession(options.common, screen, report);
    const std::string request = FillDocumentId(options.requestText, session->documentId);
    const Reply reply = Send(*session, request);
    report.status = reply.status;
    report.reply = {reply.first, reply.second};
    screen.Result("status: " + std::to_string(reply.status));
    screen.Result("first:  " + reply.first);
    screen.Result("second: " + reply.second);
    RequireSuccess(request, reply, session->record);
    return reply.status == 0 && report.warnings.empty() ? kExitDone : kExitFindings;
}

}  // namespace ventrix::desk
