#include "bridge/connection.h"

#include <utility>

#include "bridge/apartment.h"
#include "bridge/client_description.h"
#include "bridge/host/operations.h"
#include "bridge/host_call.h"
#include "bridge/notifications.h"
#include "bridge/properties.h"
#include "kit/console.h"
#include "kit/resource_strings.h"

namespace ventrix {

ClientConnection connection = {};

namespace {

constexpr unsigned kOwnershipInterface = HostOwnsResultsMethod::kInterfaceNumber;
constexpr unsigned kFirstOptionalInterface = 16;

void ReleaseAndClear(IUnknown** reference) {
    IUnknown* held = std::exchange(*reference, nullptr);
    if (held != nullptr) {
        held->Release();
    }
}

// A refused interface leaves its entry null. What an earlier attempt left there goes back.
void QueryHostInterfaces(IUnknown* root, unsigned first, unsigned last) {
    for (unsigned number = first; number <= last; ++number) {
        void* found = nullptr;
        root->QueryInterface(kHostInterfaceIds[number - 1], &found);
        IUnknown* former =
            std::exchange(connection.hostInterfaces[number - 1], static_cast<IUnknown*>(found));
        ReleaseAndClear(&former);
    }
}

void AskWhoOwnsResults() {
    IUnknown* side = HostInterface(kOwnershipInterface);
    if (side != nullptr && CallMethod<HostOwnsResultsMethod>(side, 1) == S_OK) {
        connection.hostOwnsResults = true;
    }
}

void RegisterWithHost(const Q_PropList* description) {
    IUnknown* notifications = static_cast<ComUltraliteC*>(connection.notifications);
    CallMethod<RegisterClientMethod>(HostInterface(kMainHostInterface), notifications, kRegistrationWord,
                                     description);
    IUnknown* side = HostInterface(TakeModuleHandleMethod::kInterfaceNumber);
    if (side != nullptr) {
        CallMethod<TakeModuleHandleMethod>(side, connection.module);
    }
}

void IntroduceClient(const Q_PropList* description) {
    Q_PropList own = {};
    if (description == nullptr && connection.module != nullptr) {
        ReadClientDescription(connection.module, &own);
    }
    RegisterWithHost(description == nullptr ? &own : description);
    Q_ApiFreePropList(&own);
}

void HoldKeepAlive(IUnknown* keepAlive) {
    if (keepAlive != nullptr) {
        keepAlive->AddRef();
    }
    IUnknown* former = std::exchange(connection.keepAlive, keepAlive);
    ReleaseAndClear(&former);
}

}  // namespace

IUnknown* HostInterface(unsigned number) {
    return connection.hostInterfaces[number - 1];
}

bool Q_ApiIsConnected() {
    return HostInterface(kMainHostInterface) != nullptr;
}

std::int32_t Q_ApiClientInit(void* module, IUnknown* root, IUnknown* keepAlive,
                             const Q_PropList* description) {
    connection.module = module;
    if (root == nullptr) {
        return -1;
    }
    QueryHostInterfaces(root, 1, kFirstOptionalInterface - 1);
    if (!Q_ApiIsConnected()) {
        return -1;
    }
    QueryHostInterfaces(root, kFirstOptionalInterface, kHostInterfaceCount);
    AskWhoOwnsResults();
    auto* notifications = new QuorlaneNotificationsC;
    connection.notifications = notifications;
    IntroduceClient(description);
    Q_ApiRuntimeSetup();
    connection.loopEnded = false;
    Q_SetResourceModule(module);
    HoldKeepAlive(keepAlive);
    // From here on only the host's references hold the object. Without any, the connection ends with it.
    notifications->Release();
    Q_ConsoleHook = Q_ApiWriteConsole;
    return Q_ApiIsConnected() ? 0 : -1;
}

void Q_ApiDisconnect() {
    const bool hadNotifications = connection.notifications != nullptr;
    for (IUnknown*& held : connection.hostInterfaces) {
        ReleaseAndClear(&held);
    }
    // A release may have ended the notification object, and with it came the rest.
    if (hadNotifications && connection.notifications != nullptr) {
        CoDisconnectObject(static_cast<IQuorlaneNotifications0*>(connection.notifications), 0);
        LeaveApartment();
    }
    connection.loopEnded = true;
}

}  // namespace ventrix
