// The module's callbacks: Initialize selects the text mode and asks for notifications, Notify handles
// requests.
#include "bridge/callbacks.h"

#include "bridge/contract/request.h"
#include "bridge/host/operations.h"
#include "bridge/runtime_setup.h"
#include "kit/text/encodings.h"
#include "request/request_handler.h"

namespace ventrix {

void Initialize(std::int32_t code) {
    Q_ApiRuntimeSetup();
    Q_ApiSetTextMode(1);
    Q_SetEncoding("UTF-8");
    // The host expects a client of this kind to watch 53 and 97 as well. Notify ignores them.
    Q_ApiWatchNotification(53, 1);
    Q_ApiWatchNotification(97, 1);
    Q_ApiWatchNotification(kRequestNotification, 1);
}

void Notify(std::int32_t number, std::uint32_t objectId, const char* text, std::int32_t integer) {
    if (number == kRequestNotification) {
        HandleRequest(text);
    }
}

void Command(std::int32_t command) {}

void DialogEvent(std::int32_t first, std::int32_t second, std::int32_t third) {}

}  // namespace ventrix
