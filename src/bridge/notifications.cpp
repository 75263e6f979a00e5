#include "bridge/notifications.h"

#include <cstring>
#include <exception>
#include <string>

#include "bridge/connection.h"
#include "bridge/notice_fields.h"
#include "kit/console.h"
#include "kit/memory.h"
#include "kit/text/strings.h"
#include "platform/module.h"

namespace ventrix {
namespace {

void ReportOnConsole(const char* reason) {
    if (Q_ConsoleHook != nullptr) {
        Q_ConsoleHook(("A call from the host ended early: " + std::string(reason) + "\n").c_str());
    }
}

// Runs a callback. An exception must not cross the binary interface to the host, and the host expects S_OK
// from these methods whatever the callback did, so an exception is reported on the console.
template <class Callback>
HRESULT Deliver(Callback callback) {
    try {
        callback();
    } catch (const std::exception& error) {
        ReportOnConsole(error.what());
    } catch (...) {
        ReportOnConsole("unknown reason");
    }
    return S_OK;
}

// Size in bytes of the longest path that the contract allows, with its terminator.
constexpr std::size_t kModulePathSize = 260;

HRESULT HandOutBytes(const void* bytes, std::size_t size, Q_ResourceRecord* record) {
    void* copy = CoTaskMemAlloc(size);
    if (copy == nullptr) {
        return E_FAIL;
    }
    std::memcpy(copy, bytes, size);
    *record = {static_cast<std::uint32_t>(size), copy};
    return S_OK;
}

HRESULT HandOutModulePath(Q_ResourceRecord* record) {
    const std::string path = platform::ModuleFileName(connection.module);
    if (path.empty() || path.size() >= kModulePathSize) {
        return E_FAIL;
    }
    return HandOutBytes(path.c_str(), path.size() + 1, record);
}

HRESULT HandOutResource(std::uint32_t type, const char* name, Q_ResourceRecord* record) {
    const void* data = nullptr;
    std::uint32_t size = 0;
    Deliver([&] { size = ventrix::GetResource(connection.module, type, name, &data); });
    return data == nullptr ? E_FAIL : HandOutBytes(data, size, record);
}

// The callback keeps its string and its array; the host gets copies in kit memory. The array is a block also
// if it is empty, and missing if its size exceeds that of a block.
void CopyCmsResult(const Q_CmsRecord& from, Q_CmsRecord* record) {
    *record = from;
    record->text = Q_StrDup(from.text);
    const std::size_t size = from.count * sizeof(std::int32_t);
    const auto kitSize = static_cast<std::uint32_t>(size);
    record->numbers = kitSize == size ? static_cast<std::int32_t*>(Q_Alloc(kitSize, 0)) : nullptr;
    if (record->numbers == nullptr || from.numbers == nullptr) {
        record->count = 0;
    } else {
        std::memcpy(record->numbers, from.numbers, size);
    }
}

template <class Interface>
bool StoreInterface(QuorlaneNotificationsC* object, REFIID asked, REFIID offered, void** out) {
    if (asked != offered) {
        return false;
    }
    object->AddRef();
    *out = static_cast<Interface*>(object);
    return true;
}

}  // namespace

HRESULT QlApiInterfacesC::Initialize(std::int32_t code) {
    return Deliver([&] { ventrix::Initialize(code); });
}

HRESULT QlApiInterfacesC::Quit() {
    connection.kitReady = false;
    return S_OK;
}

HRESULT QlApiInterfacesC::Command(std::int32_t command) {
    return Deliver([&] { ventrix::Command(command); });
}

HRESULT QlApiInterfacesC::Message(std::intptr_t value, std::int32_t first, std::int32_t second) {
    return Deliver([&] { ventrix::Message(value, first, second); });
}

HRESULT QlApiInterfacesC::DialogEvent(std::int32_t first, std::int32_t second, std::int32_t third) {
    return Deliver([&] { ventrix::DialogEvent(first, second, third); });
}

HRESULT QlApiInterfacesC::Notify(std::int32_t number, std::uint32_t objectId, const char* text,
                                 std::int32_t integer) {
    if (number != kNoticeFieldsNotification) {
        return Deliver([&] { ventrix::Notify(number, objectId, text, integer); });
    }
    Q_NoticeFieldsRecord record = ParseNoticeFields(text);
    Deliver([&] { ventrix::Notify(number, objectId, reinterpret_cast<const char*>(&record), integer); });
    FreeNoticeFields(&record);
    return S_OK;
}

HRESULT QlApiInterfacesC::GetResource(std::uint32_t type, const char* name, Q_ResourceRecord* record) {
    return type == 0 ? HandOutModulePath(record) : HandOutResource(type, name, record);
}

HRESULT QlApiInterfacesC::HtmlDialogEventEx(std::int32_t event, std::intptr_t first, std::intptr_t second) {
    return Deliver([&] { ventrix::HtmlDialogEventEx(event, first, second); });
}

HRESULT QlApiInterfacesC::CMSCommand(std::int32_t command, const char* text, std::int32_t integer,
                                     std::intptr_t value, Q_CmsRecord* record) {
    Q_CmsRecord local = {};
    Deliver([&] { ventrix::CMSCommand(command, text, integer, value, &local); });
    CopyCmsResult(local, record);
    return S_OK;
}

void QuorlaneNotificationsC::FindInterface(REFIID id, void** out) {
    if (StoreInterface<IQuorlaneCMSNotifications0>(this, id, kCmsNotifications0Id, out) ||
        StoreInterface<IQuorlaneNotifications0>(this, id, kNotifications0Id, out) ||
        StoreInterface<IQuorlaneNotifications1>(this, id, kNotifications1Id, out)) {
        return;
    }
    ComUltraliteC::FindInterface(id, out);
}

QuorlaneNotificationsC::~QuorlaneNotificationsC() {
    if (connection.notifications == this) {
        connection.notifications = nullptr;
    }
    Q_ApiDisconnect();
    IUnknown* keepAlive = connection.keepAlive;
    connection.keepAlive = nullptr;
    if (keepAlive != nullptr) {
        keepAlive->Release();
    }
}

}  // namespace ventrix
