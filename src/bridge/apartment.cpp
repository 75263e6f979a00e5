#include "bridge/apartment.h"

#include <utility>

#include "bridge/connection.h"
#include "bridge/message_filter.h"

namespace ventrix {

namespace {

void ForgetFilter() {
    IMessageFilter* filter = std::exchange(connection.messageFilter, nullptr);
    if (filter != nullptr) {
        filter->Release();
    }
}

}  // namespace

void EnterApartment() {
    const HRESULT entered = CoInitialize(nullptr);
    if (entered == S_OK) {
        connection.apartmentOwned = true;
        ForgetFilter();
        connection.messageFilter = new DefaultClientMessageFilterC;
        CoRegisterMessageFilter(connection.messageFilter, nullptr);
    } else if (SUCCEEDED(entered)) {
        // The apartment is somebody else's, or an earlier attempt of ours left it: one entry is enough.
        CoUninitialize();
    }
}

void LeaveApartment() {
    if (connection.messageFilter != nullptr) {
        // While the apartment is still there: outside it the platform would keep the filter.
        CoRegisterMessageFilter(nullptr, nullptr);
        ForgetFilter();
    }
    if (std::exchange(connection.apartmentOwned, false)) {
        CoUninitialize();
    }
}

}  // namespace ventrix
