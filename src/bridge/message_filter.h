// How an out-of-process client handles a busy host. The platform calls the filter on the client's thread
// while an outgoing call waits.
//
// The delay between two attempts grows with the time that has passed: the call is repeated at once during the
// first 200 milliseconds, then after a quarter of the elapsed time, and given up after twenty minutes. Thus a
// short dialog of the host delays the call little, and a long task is not interrupted often. The platform
// treats a delay below 100 milliseconds as none. The filter has no state, so one object serves every call.
#pragma once

#include "kit/com_ultralite.h"

namespace ventrix {

class DefaultClientMessageFilterC final : public ImplementComC<IMessageFilter, ComUltraliteC> {
  public:
    /// Accepts every incoming call.
    DWORD HandleInComingCall(DWORD callType, HTASK caller, DWORD tickCount, INTERFACEINFO* info) override;

    /// Milliseconds to wait before the next attempt, or 0xFFFFFFFF to give up. `elapsed` is the time since
    /// the first attempt, in milliseconds. A call that the host rejects permanently is not repeated.
    DWORD RetryRejectedCall(HTASK callee, DWORD elapsed, DWORD rejectType) override;

    /// Leaves pending messages to the platform and keeps waiting.
    DWORD MessagePending(HTASK callee, DWORD elapsed, DWORD pendingType) override;
};

}  // namespace ventrix
