#include "bridge/out_of_process.h"

#include <string>

#include "bridge/apartment.h"
#include "bridge/connection.h"
#include "bridge/contract/host_interfaces.h"
#include "bridge/host/operations.h"
#include "kit/last_error.h"
#include "platform/environment.h"
#include "platform/library.h"
#include "platform/module.h"
#include "platform/wide_text.h"

namespace ventrix {
namespace {

constexpr std::int32_t kNoHost = -20;
constexpr DWORD kAnyServer = CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
constexpr char kCannotConnect[] = "Can't connect to Quorlane server";
constexpr const GUID& kMainInterfaceId = kHostInterfaceIds[kMainHostInterface - 1];

CLSID HostClass() {
    const auto text = platform::EnvironmentValue("QLGUID");
    CLSID classId = {};
    const bool given = text && SUCCEEDED(CLSIDFromString(platform::WideFromUtf8(*text).c_str(), &classId));
    return given ? classId : kHostClassId;
}

// A new reference, or null if no host is running.
IUnknown* FindHost(REFCLSID classId) {
    void* host = nullptr;
    CoCreateInstance(classId, nullptr, kAnyServer, kMainInterfaceId, &host);
    return static_cast<IUnknown*>(host);
}

// The same on another machine. Not every platform has the function, so it is looked up at run time.
IUnknown* FindHostOn(const char* serverName, REFCLSID classId) {
    auto* createInstance = platform::FindFunction<CoCreateInstanceExFunction>(
        platform::OpenLibrary("ole32.dll"), "CoCreateInstanceEx");
    if (createInstance == nullptr) {
        return nullptr;
    }
    std::u16string name = platform::WideFromUtf8(serverName);
    COSERVERINFO server = {0, name.data(), nullptr, 0};
    MULTI_QI query = {&kMainInterfaceId, nullptr, S_OK};
    createInstance(classId, nullptr, kAnyServer, &server, 1, &query);
    return query.pItf;
}

std::int32_t ConnectTo(IUnknown* host, const Q_PropList* description) {
    if (host == nullptr) {
        return kNoHost;
    }
    const std::int32_t result = Q_ApiClientInit(platform::MainModule(), host, nullptr, description);
    // The connection holds its own references.
    host->Release();
    return result;
}

void ServeMessages() {
    while (!connection.loopEnded) {
        Q_ApiPumpOneMessage(nullptr);
    }
}

}  // namespace

std::int32_t Q_ApiConnectHost(const Q_PropList* description, const char* serverName, const CLSID* classId) {
    if (Q_ApiIsConnected()) {
        return 0;
    }
    EnterApartment();
    const CLSID hostClass = classId == nullptr ? HostClass() : *classId;
    IUnknown* host = serverName == nullptr ? FindHost(hostClass) : FindHostOn(serverName, hostClass);
    const std::int32_t result = ConnectTo(host, description);
    if (result != 0) {
        Q_ApiLastError = result;
    }
    return result;
}

std::int32_t Q_ApiRunClient() {
    const bool connected = Q_ApiConnectHost(nullptr, nullptr, nullptr) == 0;
    if (connected) {
        ServeMessages();
    } else {
        Q_ApiWriteConsole(kCannotConnect);
    }
    Q_ApiDisconnect();
    return connected ? 0 : 1;
}

const char* Q_ApiConnectOnce() {
    return Q_ApiConnectHost(nullptr, nullptr, nullptr) == 0 ? nullptr : kCannotConnect;
}

std::int32_t Q_ApiPumpOneMessage(std::int32_t* integer) {
    if (integer != nullptr) {
        *integer = 0;
    }
    MSG message;
    if (GetMessageW(&message, nullptr, 0, 0) == 0) {
        Q_ApiStopLoop();
        return 0;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
    return 0;
}

void Q_ApiStopLoop() {
    connection.loopEnded = true;
}

}  // namespace ventrix
