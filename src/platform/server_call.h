// Calls to a server in another apartment that may be busy: retrying a rejected call as the thread's message
// filter decides. On a platform with a component runtime of its own, CallServer is the plain call.
#pragma once

#include <cstdint>
#include <functional>

#include "platform/com.h"

namespace ventrix::platform {

/// How a waiting call measures time and waits.
struct CallClock {
    std::function<std::uint32_t()> now;                    ///< Milliseconds from any start; may wrap around.
    std::function<void(std::uint32_t milliseconds)> wait;  ///< Returns after that time.
};

/// The real clock. While it waits, it serves the calls that other threads make to this one.
const CallClock& SystemCallClock();

/// Sets the clock of all calls that are not given one, so that retries can be simulated without waiting. Null
/// restores the real clock. The clock is not copied and must exist until then.
void ReplaceCallClock(const CallClock* clock);
const CallClock& CurrentCallClock();

/// Makes an outgoing call. As long as it returns RPC_E_SERVERCALL_RETRYLATER or RPC_E_CALL_REJECTED, the
/// thread's message filter is asked what to do and given the milliseconds since the first attempt. If the
/// filter returns 0xFFFFFFFF, that result is final; a number below 100 repeats the call at once, any other
/// after that many milliseconds. Without a message filter the first result is final.
HRESULT CallServer(const std::function<HRESULT()>& call, const CallClock& clock = CurrentCallClock());

}  // namespace ventrix::platform
