#include "bridge/message_filter.h"

namespace ventrix {
namespace {

constexpr DWORD kCancelCall = 0xFFFFFFFF;
constexpr DWORD kRetryLimit = 20 * 60 * 1000;  // milliseconds
constexpr DWORD kRetryAtOnce = 200;            // milliseconds

}  // namespace

DWORD DefaultClientMessageFilterC::HandleInComingCall(DWORD, HTASK, DWORD, INTERFACEINFO*) {
    return SERVERCALL_ISHANDLED;
}

DWORD DefaultClientMessageFilterC::RetryRejectedCall(HTASK, DWORD elapsed, DWORD rejectType) {
    if (rejectType == SERVERCALL_REJECTED || elapsed >= kRetryLimit) {
        return kCancelCall;
    }
    return elapsed <= kRetryAtOnce ? 0 : elapsed / 4;
}

DWORD DefaultClientMessageFilterC::MessagePending(HTASK, DWORD, DWORD) {
    return PENDINGMSG_WAITDEFPROCESS;
}

}  // namespace ventrix
