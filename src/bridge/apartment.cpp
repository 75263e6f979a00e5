#include "bridge/apartment.h"

#include <utility>

#include "bridge/connection.h"
#include "bridge/message_filter.h"

namespace ventrix {

void EnterApartment() {
    // What an attempt without success left in place serves the next one.
    if (connection.apartmentOwned) {
        return;
    }
    const HRESULT entered = CoInitialize(nullptr);
    connection.apartmentOwned = entered == S_OK;
    if (connection.apartmentOwned) {
        connection.messageFilter = new DefaultClientMessageFilterC;
        CoRegisterMessageFilter(connection.messageFilter, nullptr);
    } else if (SUCCEEDED(entered)) {
        // Somebody else's apartment: it is not to be held open for long.
        CoUninitialize();
    }
}

void LeaveApartment() {
    IMessageFilter* filter = std::exchange(connection.messageFilter, nullptr);
    if (filter != nullptr) {
        // While the apartment is still there: outside it the platform would keep the filter.
        CoRegisterMessageFilter(nullptr, nullptr);
        filter->Release();
    }
    if (std::exchange(connection.apartmentOwned, false)) {
        CoUninitialize();
    }
}

}  // namespace ventrix
