// A client that runs in its own process.
//
// It finds a running host by class id and connects as a loaded module does. The thread that connects enters a
// single-threaded apartment, so the component model delivers the host's calls as messages to that thread; the
// client therefore serves a message loop. A busy host rejects calls, which the message filter repeats
// (bridge/message_filter.h).
#pragma once

#include <cstdint>

#include "bridge/contract/properties.h"
#include "platform/com.h"

namespace ventrix {

/// Connects to a running host. Each argument may be null: the description is then read from the main module's
/// version block, the server is this machine, and the class id is that of the environment variable QLGUID, or
/// the host's default if the variable does not hold one. 0 if connected, also if it was before; -20 if no
/// host was found; else the result of Q_ApiClientInit. Sets Q_ApiLastError on failure.
std::int32_t Q_ApiConnectHost(const Q_PropList* description, const char* serverName, const CLSID* classId);

/// Connects, serves messages until the quit message or Q_ApiStopLoop, and disconnects. 0, or 1 if it could
/// not connect.
std::int32_t Q_ApiRunClient();

/// Connects. Null if connected, else a message for the user.
const char* Q_ApiConnectOnce();

/// Waits for one message and serves it; the quit message ends the loop. Sets the integer to 0 unless it is
/// null. Always returns 0.
std::int32_t Q_ApiPumpOneMessage(std::int32_t* integer);

/// Ends the loop of Q_ApiRunClient after the current message.
void Q_ApiStopLoop();

}  // namespace ventrix
