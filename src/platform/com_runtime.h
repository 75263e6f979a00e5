// What a program needs that acts as a host: offering a class, and work on other threads.
//
// A host's objects belong to the host's thread: the one on which the factory of its class runs, the client's
// calls arrive, and the host may call the client. With the system's component runtime it is a thread with an
// apartment of its own, one for each offer. Our own runtime has no proxies, so there it is the client's
// thread.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "platform/com.h"

namespace ventrix::platform {

/// Creates an object of a class and stores the requested interface with a reference, as QueryInterface does.
using ClassFactory = std::function<HRESULT(REFIID interfaceId, void** object)>;

/// Offers a class to CoCreateInstance of this process or, with a server name, to CoCreateInstanceEx for that
/// server. A second offer of a class replaces the first; an empty factory withdraws it.
///
/// On Windows the class is offered to all processes of the user, and withdrawing it ends the host's thread. A
/// server is a machine there, so that the name has no effect. Throws std::runtime_error if the system
/// refuses.
void OfferClass(REFCLSID classId, ClassFactory factory, std::u16string_view server = {});

/// The number by which other threads address this thread's message queue. On Windows it is the system's.
std::uint32_t CurrentThreadNumber();

/// Posts work to a thread's queue; its DispatchMessageW runs it. May be called on any thread. False, and the
/// work is dropped, if the thread has ended or has never asked for its number or a message.
bool PostToThread(std::uint32_t threadNumber, std::function<void()> work);

/// Posts the quit message to a thread's queue. It is delivered after everything else. False as PostToThread.
/// On Windows the thread may be one of another process.
bool PostQuitToThread(std::uint32_t threadNumber);

/// Runs `work` on another thread and waits until it is done, as a host in another apartment calls a client.
/// The thread serves the call in its message loop, or while it waits in CallServer (server_call.h); on
/// Windows in its message loop only, but a caller in an apartment serves calls of other apartments meanwhile.
/// False, without waiting, as PostToThread; also false if the thread ends before it has served the call.
bool CallOnThread(std::uint32_t threadNumber, const std::function<void()>& work);

}  // namespace ventrix::platform
