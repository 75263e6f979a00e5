// The object at which everything arrives that the host says to the client. Q_ApiClientInit creates it, the
// host's references keep it alive, and its end is the end of the connection. Each host call lands in a
// callback of bridge/callbacks.h.
#pragma once

#include <cstdint>

#include "bridge/callbacks.h"
#include "bridge/contract/notification_interfaces.h"
#include "kit/com_ultralite.h"

namespace ventrix {

/// The bodies of all that a host calls. No exception leaves them.
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

/// The notification object. It is made with new and frees itself.
class QuorlaneNotificationsC final : public QlApiInterfacesC {
  public:
    void FindInterface(REFIID id, void** out) override;
    ~QuorlaneNotificationsC() override;
};

/// The text of notification 75, cut at each record separator byte (0x1E) and at its end. There is always a
/// first piece. Null counts as the empty text. Free with FreeNoticeFields.
Q_NoticeFieldsRecord ParseNoticeFields(const char* text);
void FreeNoticeFields(Q_NoticeFieldsRecord* record);

}  // namespace ventrix
