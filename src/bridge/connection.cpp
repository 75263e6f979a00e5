#include "bridge/connection.h"

#include <utility>

#include "bridge/apartment.h"
#include "bridge/host/operations.h"
#include "bridge/host/properties.h"
#include "bridge/host_call.h"
#include "bridge/notifications.h"
#include "bridge/runtime_setup.h"
#include "kit/console.h"
#include "kit/resource_strings.h"
#include "platform/module.h"

namespace ventrix {

ClientConnection connection = {};

namespace {

constexpr unsigned kFirstOptionalInterface = 16;

constexpr char kLanguageBlock[] = "040904b0";

/// A property of the client description and the key of the version block that holds it.
struct DescriptionKey {
    std::int32_t number;
    const char* key;
};

constexpr DescriptionKey kDescriptionKeys[] = {
    {kClientNameProperty, "ClientName"},
    {3, "ClientType"},
    {4, "FileDescription"},
    {5, "ClientProducts"},
    {6, "ClientFacet"},
    {7, "ClientFormatId"},
    {8, "ClientVendor"},
    {9, "ClientSuffix"},
    {10, "ClientInFormat"},
    {11, "ClientOutFormat"},
};

void ReleaseAndClear(IUnknown** reference) {
    IUnknown* held = std::exchange(*reference, nullptr);
    if (held != nullptr) {
        held->Release();
    }
}

// A refused interface leaves its entry null. A failed attempt to connect keeps its references in the table,
// so the former entry is released.
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
    if (CallMethod<HostOwnsResultsMethod>(1) == S_OK) {
        connection.hostOwnsResults = true;
    }
}

void RegisterWithHost(const Q_PropList* description) {
    IUnknown* notifications = static_cast<ComUltraliteC*>(connection.notifications);
    CallMethod<RegisterClientMethod>(notifications, kRegistrationWord, description);
    CallMethod<TakeModuleHandleMethod>(connection.module);
}

/// Adds a property for each client key of the module's version block.
void ReadClientDescription(void* module, Q_PropList* description) {
    for (const DescriptionKey& key : kDescriptionKeys) {
        const auto text = platform::VersionBlockText(module, kLanguageBlock, key.key);
        if (text) {
            Q_ApiSetPropString(description, key.number, text->c_str());
        }
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
    // Now only the host's references keep the object alive. If there are none, its destructor runs here and
    // ends the connection.
    notifications->Release();
    Q_ConsoleHook = Q_ApiWriteConsole;
    return Q_ApiIsConnected() ? 0 : -1;
}

void Q_ApiDisconnect() {
    const bool hadNotifications = connection.notifications != nullptr;
    for (IUnknown*& held : connection.hostInterfaces) {
        ReleaseAndClear(&held);
    }
    // Releasing the interfaces may have made the host release the notification object. Its destructor has
    // then run this function to its end already.
    if (hadNotifications && connection.notifications != nullptr) {
        CoDisconnectObject(static_cast<IQuorlaneNotifications0*>(connection.notifications), 0);
        LeaveApartment();
    }
    connection.loopEnded = true;
}

}  // namespace ventrix
