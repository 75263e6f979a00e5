#include "platform/server_call.h"

#include <chrono>

#include "platform/posix/apartment.h"
#include "platform/posix/message_queue.h"

namespace ventrix::platform {
namespace {

using Steady = std::chrono::steady_clock;

constexpr DWORD kCancelCall = 0xFFFFFFFF;
constexpr DWORD kLeastWait = 100;  // Less means to retry at once.

bool IsRefusal(HRESULT answer) {
    return answer == RPC_E_CALL_REJECTED || answer == RPC_E_SERVERCALL_RETRYLATER;
}

DWORD RejectTypeOf(HRESULT answer) {
    return answer == RPC_E_CALL_REJECTED ? SERVERCALL_REJECTED : SERVERCALL_RETRYLATER;
}

std::uint32_t SteadyMilliseconds() {
    const auto sinceStart =
        std::chrono::duration_cast<std::chrono::milliseconds>(Steady::now().time_since_epoch());
    return static_cast<std::uint32_t>(sinceStart.count());
}

const CallClock* replacement = nullptr;

}  // namespace

void ReplaceCallClock(const CallClock* clock) {
    replacement = clock;
}

const CallClock& CurrentCallClock() {
    return replacement == nullptr ? SystemCallClock() : *replacement;
}

const CallClock& SystemCallClock() {
    static const CallClock clock = {
        SteadyMilliseconds, [](std::uint32_t milliseconds) {
            CurrentQueue().ServeCallsUntil(Steady::now() + std::chrono::milliseconds(milliseconds));
        }};
    return clock;
}

HRESULT CallServer(const std::function<HRESULT()>& call, const CallClock& clock) {
    const std::uint32_t start = clock.now();
    for (;;) {
        const HRESULT answer = call();
        IMessageFilter* filter = CurrentApartment().filter;
        if (!IsRefusal(answer) || filter == nullptr) {
            return answer;
        }
        const DWORD wait = filter->RetryRejectedCall(nullptr, clock.now() - start, RejectTypeOf(answer));
        if (wait == kCancelCall) {
            return answer;
        }
        if (wait >= kLeastWait) {
            clock.wait(wait);
        }
    }
}

}  // namespace ventrix::platform
