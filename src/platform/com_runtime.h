// The component runtime's inner side: what a program that plays the host needs of it, and the road of an
// outgoing call. Where the platform has a component runtime of its own, this header has no counterpart but
// CallServer, which there is the plain call.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "platform/com.h"

namespace ventrix::platform {

/// Makes an object of a class and gives the asked interface with a reference, as QueryInterface does.
using ClassFactory = std::function<HRESULT(REFIID interfaceId, void** object)>;

/// Offers a class to CoCreateInstance of this process, or, with a server name, to CoCreateInstanceEx for that
/// server. A second offer replaces the first; an empty factory withdraws it.
void OfferClass(REFCLSID classId, ClassFactory factory, std::u16string_view server = {});

/// A factory for one object that is already running. It holds a reference until the offer ends.
ClassFactory RunningObject(IUnknown* object);

/// Names this thread's queue to other threads.
std::uint32_t CurrentThreadNumber();

/// Puts work into a thread's queue; its DispatchMessageW runs it. False if that thread has ended or has never
/// asked for its number or messages; the work is then dropped. Any thread may call this.
bool PostToThread(std::uint32_t threadNumber, std::function<void()> work);

/// Puts the quit message behind everything in a thread's queue. False as PostToThread.
bool PostQuitToThread(std::uint32_t threadNumber);

/// Runs `work` on another thread as a call from outside, and waits until it is done: the way in which a host
/// in another apartment reaches a client. The thread serves it from its queue, also while it waits in
/// CallServer. False, without waiting, as PostToThread; false too if the thread ends before it has served the
/// call.
bool CallOnThread(std::uint32_t threadNumber, const std::function<void()>& work);

/// How time passes for a call that waits; tests put their own in.
struct CallClock {
    std::function<std::uint32_t()> now;  ///< Milliseconds from any beginning; may wrap around.
    std::function<void(std::uint32_t milliseconds)> wait;  ///< Lets that much time pass.
};

/// The real clock. It serves calls from outside that reach this thread while it waits.
const CallClock& SystemCallClock();

/// Puts another clock in the place of the real one for all calls that name none; null brings the real one
/// back. The clock stays the caller's. For tests.
void ReplaceCallClock(const CallClock* clock);
const CallClock& CurrentCallClock();

/// Makes an outgoing call. While the call answers RPC_E_SERVERCALL_RETRYLATER or RPC_E_CALL_REJECTED, the
/// thread's message filter is asked what to do, with the milliseconds since the first attempt: 0xFFFFFFFF
/// gives up and returns that answer, a number below 100 calls again at once, any other after that many
/// milliseconds. Without a message filter the first answer is the result.
HRESULT CallServer(const std::function<HRESULT()>& call, const CallClock& clock = CurrentCallClock());

}  // namespace ventrix::platform
