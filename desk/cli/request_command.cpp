#include "bridge/contract/request.h"
#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/request_text.h"
#include "desk/cli/session.h"

namespace ventrix::desk {

int Request(const Options& options, const Screen& screen, RunReport& report) {
    const auto session = StartSession(options.common, screen, report);
    const Reply reply = Send(*session, FillDocumentId(options.requestText, session->documentId));
    report.status = reply.status;
    report.reply = {reply.first, reply.second};
    screen.Result("status: " + std::to_string(reply.status));
    screen.Result("first:  " + reply.first);
    screen.Result("second: " + reply.second);
    return reply.status == kRequestRefused ? kExitRefused : reply.status == 0 ? kExitDone : kExitFindings;
}

}  // namespace ventrix::desk
