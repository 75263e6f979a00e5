#include "platform/server_call.h"

#include "platform/win32/system_calls.h"

// The system's component runtime asks the message filter itself, before a call returns.

namespace ventrix::platform {
namespace {

const CallClock* replacement = nullptr;

}  // namespace

void ReplaceCallClock(const CallClock* clock) {
    replacement = clock;
}

const CallClock& CurrentCallClock() {
    return replacement == nullptr ? SystemCallClock() : *replacement;
}

const CallClock& SystemCallClock() {
    static const CallClock clock = {[] { return static_cast<std::uint32_t>(::GetTickCount()); },
                                    [](std::uint32_t milliseconds) { ::Sleep(milliseconds); }};
    return clock;
}

HRESULT CallServer(const std::function<HRESULT()>& call, const CallClock& /*clock*/) {
    return call();
}

}  // namespace ventrix::platform
