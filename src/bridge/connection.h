// A client's one connection to the host: the host's interfaces and the notification object. The state is
// process-wide and has no lock, since everything runs on the host's thread.
#pragma once

#include <cstdint>

#include "bridge/contract/host_interfaces.h"

namespace ventrix {

class QuorlaneNotificationsC;

/// All fields are zero when the module is loaded.
struct ClientConnection {
    /// Counted references. Interface n is at index n - 1; null if the host does not offer it.
    IUnknown* hostInterfaces[kHostInterfaceCount];
    void* module;                           ///< First argument of Q_ApiClientInit.
    QuorlaneNotificationsC* notifications;  ///< The object that the host calls. The host's references own it.
    IUnknown* keepAlive;                    ///< A counted reference, or null.
    bool hostOwnsResults;                   ///< Whether the host frees what its methods hand out.
    bool loopEnded;                         ///< Ends the message loop of an out-of-process client.
    bool kitReady;                          ///< Cleared when the host calls Quit.
    bool apartmentOwned;                    ///< EnterApartment entered the apartment.
    IMessageFilter* messageFilter;          ///< A counted reference to the registered filter, or null.
    std::uint32_t openCalls;                ///< Calls of the host that have not returned.
    bool leavesAfterCall;                   ///< The apartment is left when the last of them returns.
};

extern ClientConnection connection;

/// The interface with this number, 1 to 18, or null. The reference stays the connection's.
IUnknown* HostInterface(unsigned number);

/// Releases the host's interfaces. If the host still holds the notification object, also undoes what
/// Q_ApiConnectHost set up.
void Q_ApiDisconnect();

/// Whether the connection holds the main interface.
bool Q_ApiIsConnected();

/// The module's one export; see ClientInitEntry.
extern "C" [[gnu::visibility("default")]] std::int32_t Q_ApiClientInit(void* module, IUnknown* root,
                                                                       IUnknown* keepAlive,
                                                                       const Q_PropList* description);

}  // namespace ventrix
