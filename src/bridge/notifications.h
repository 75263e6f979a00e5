// The object on which the host calls the client. Each call ends in a function of bridge/callbacks.h.
//
// The object is also the lifetime of the connection. Q_ApiClientInit creates it with one reference, the host
// adds its own at registration, and Q_ApiClientInit gives the first one up. When the host releases its last
// reference, the destructor releases the host's interfaces and the keep-alive object. The host may use the
// object during that; the reference count is then set so high that it cannot reach zero a second time.
#pragma once

#include <cstdint>

#include "bridge/callbacks.h"
#include "bridge/contract/notification_interfaces.h"
#include "kit/com_ultralite.h"

namespace ventrix {

/// Implements the methods of the three notification interfaces. No exception leaves them.
class QlApiInterfacesC : public ComUltraliteC,
                         public IQuorlaneCMSNotifications0,
                         public IQuorlaneNotifications0,
                         public IQuorlaneNotifications1 {
  public:
    HRESULT QueryInterface(REFIID id, void** out) override { return ComUltraliteC::QueryInterface(id, out); }
    ULONG AddRef() override { return ComUltraliteC::AddRef(); }
    ULONG Release() override { return ComUltraliteC::Release(); }

    HRESULT CMSCommand(std::int32_t command, const char* text, std::int32_t integer, std::intptr_t value,
                       Q_CmsRecord* record) override;

    HRESULT Initialize(std::int32_t code) override;
    HRESULT Quit() override;
    HRESULT Command(std::int32_t command) override;
    HRESULT Message(std::intptr_t value, std::int32_t first, std::int32_t second) override;
    HRESULT DialogEvent(std::int32_t first, std::int32_t second, std::int32_t third) override;
    HRESULT Notify(std::int32_t number, std::uint32_t objectId, const char* text,
                   std::int32_t integer) override;
    HRESULT GetResource(std::uint32_t type, const char* name, Q_ResourceRecord* record) override;

    HRESULT HtmlDialogEventEx(std::int32_t event, std::intptr_t first, std::intptr_t second) override;
};

/// The notification object. It is created with new and deletes itself.
class QuorlaneNotificationsC final : public QlApiInterfacesC {
  public:
    void FindInterface(REFIID id, void** out) override;
    ~QuorlaneNotificationsC() override;
};

}  // namespace ventrix
