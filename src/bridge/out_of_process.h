// The road of a client that runs as a process of its own: it finds a running host by its class id, connects
// as a loaded module would, and serves a message loop in which the host's calls arrive, all on one thread.
#pragma once

#include <cstdint>

#include "bridge/contract/properties.h"
#include "platform/com.h"

namespace ventrix {

/// Connects to a running host. A null description is read from the main module's version block; a null server
/// is this machine; a null class id is the one in the environment variable QLGUID, or the host's own where
/// that is not set or no class id. 0 when connected, also before; -20 when no host was reached; else the
/// result of Q_ApiClientInit. A failure stands in Q_ApiLastError too.
std::int32_t Q_ApiConnectHost(const Q_PropList* description, const char* serverName, const CLSID* classId);

/// Connects, serves messages until the quit message or Q_ApiStopLoop, and disconnects. 0; 1 if there was no
/// connection.
std::int32_t Q_ApiRunClient();

/// Connects. Null when connected, else a text to show.
const char* Q_ApiConnectOnce();

/// Waits for one message and serves it; the quit message ends the loop. The integer, unless null, becomes 0.
/// Always 0.
std::int32_t Q_ApiPumpOneMessage(std::int32_t* integer);

/// Ends the loop after the message that is being served.
void Q_ApiStopLoop();

}  // namespace ventrix
