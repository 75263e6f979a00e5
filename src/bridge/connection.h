// The one connection of a client to the host: the host's interfaces, the notification object and the kit's
// runtime. Process-wide and unguarded; all of it runs on the host's thread.
#pragma once

#include <cstdint>

#include "bridge/contract/host_interfaces.h"

namespace ventrix {

class QuorlaneNotificationsC;

/// All zero at load.
struct ClientConnection {
    IUnknown*
        hostInterfaces[kHostInterfaceCount];  ///< Number n at index n - 1; null: not offered. References.
    void* module;                             ///< First argument of Q_ApiClientInit.
    QuorlaneNotificationsC* notifications;    ///< The object that the host calls; it belongs to the host.
    IUnknown* keepAlive;                      ///< A reference, or null.
    bool hostOwnsResults;                     ///< Who frees what the host hands out.
    bool loopEnded;                           ///< Ends the message loop of an out-of-process client.
    bool kitReady;                            ///< Cleared when the host says Quit.
    bool apartmentOwned;                      ///< Q_ApiConnectHost entered the apartment itself.
    IMessageFilter* messageFilter;            ///< The registered filter, or null.
};

extern ClientConnection connection;

/// The interface with a number of 1 to 18, or null. Not a new reference.
IUnknown* HostInterface(unsigned number);

/// Settles encodings and the folder of ICU's data. 0, or 1 when the host could not name its folder.
std::int32_t Q_ApiRuntimeSetup();

/// Releases the host's interfaces; ends what Q_ApiConnectHost set up if the host still holds the notification
/// object.
void Q_ApiDisconnect();

/// Whether the main interface is held.
bool Q_ApiIsConnected();

/// The module's one export; see ClientInitEntry.
extern "C" [[gnu::visibility("default")]] std::int32_t Q_ApiClientInit(void* module, IUnknown* root,
                                                                       IUnknown* keepAlive,
                                                                       const Q_PropList* description);

}  // namespace ventrix
