// The inner side of the component runtime: what a program needs that acts as a host in its own process. A
// platform with a component runtime of its own has no counterpart to this header.
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
void OfferClass(REFCLSID classId, ClassFactory factory, std::u16string_view server = {});

/// The number by which other threads address this thread's message queue.
std::uint32_t CurrentThreadNumber();

/// Posts work to a thread's queue; its DispatchMessageW runs it. May be called on any thread. False, and the
/// work is dropped, if the thread has ended or has never asked for its number or a message.
bool PostToThread(std::uint32_t threadNumber, std::function<void()> work);

/// Posts the quit message to a thread's queue. It is delivered after everything else. False as PostToThread.
bool PostQuitToThread(std::uint32_t threadNumber);

/// Runs `work` on another thread and waits until it is done, as a host in another apartment calls a client.
/// The thread serves the call in its message loop, or while it waits in CallServer (server_call.h). False,
/// without waiting, as PostToThread; also false if the thread ends before it has served the call.
bool CallOnThread(std::uint32_t threadNumber, const std::function<void()>& work);

}  // namespace ventrix::platform
