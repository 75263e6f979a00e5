#include "bridge/message_filter.h"

namespace ventrix {
namespace {

constexpr DWORD cancelCall = 0xFFFFFFFF;
constexpr DWORD retryLimit = 20 * 60 * 1000;
constexpr DWORD retryAtOnce = 200;

}  // namespace

DWORD DefaultClientMessageFilterC::HandleInComingCall(DWORD, HTASK, DWORD, INTERFACEINFO*) {
    return SERVERCALL_ISHANDLED;
}

DWORD DefaultClientMessageFilterC::RetryRejectedCall(HTASK, DWORD elapsed, DWORD rejectType) {
    if (rejectType == SERVERCALL_REJECTED || elapsed >= retryLimit) {
        return cancelCall;
    }
    return elapsed <= retryAtOnce ? 0 : elapsed / 4;
}

DWORD DefaultClientMessageFilterC::MessagePending(HTASK, DWORD, DWORD) {
    return PENDINGMSG_WAITDEFPROCESS;
}

}  // namespace ventrix
