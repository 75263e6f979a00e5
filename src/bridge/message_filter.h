// What an out-of-process client does when the host is busy: it calls again, at first at once and then ever
// more slowly, and gives up after twenty minutes. The platform asks it on the client's thread, while an
// outgoing call waits. Without state.
#pragma once

#include "kit/com_ultralite.h"

namespace ventrix {

class DefaultClientMessageFilterC final : public ImplementComC<IMessageFilter, ComUltraliteC> {
  public:
    /// Every incoming call is served.
    DWORD HandleInComingCall(DWORD callType, HTASK caller, DWORD tickCount, INTERFACEINFO* info) override;

    /// Milliseconds to wait before the next attempt, or 0xFFFFFFFF to give up. elapsed: milliseconds since
    /// the first.
    DWORD RetryRejectedCall(HTASK callee, DWORD elapsed, DWORD rejectType) override;

    /// Pending messages are treated as the platform does, and the wait goes on.
    DWORD MessagePending(HTASK callee, DWORD elapsed, DWORD pendingType) override;
};

}  // namespace ventrix
