#include "bridge/apartment.h"

#include <utility>

#include "bridge/connection.h"
#include "bridge/message_filter.h"

namespace ventrix {

namespace {

void ReleaseFilter() {
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
        ReleaseFilter();
        connection.messageFilter = new DefaultClientMessageFilterC;
        CoRegisterMessageFilter(connection.messageFilter, nullptr);
    } else if (SUCCEEDED(entered)) {
        // The thread was in an apartment already: that of other code, or the one that an earlier attempt to
        // connect entered and kept. This second entry is not needed.
        CoUninitialize();
    }
}

void LeaveApartment() {
    if (connection.messageFilter != nullptr) {
        // Before the apartment is left: after that the platform would keep the filter.
        CoRegisterMessageFilter(nullptr, nullptr);
        ReleaseFilter();
    }
    if (std::exchange(connection.apartmentOwned, false)) {
        CoUninitialize();
    }
}

}  // namespace ventrix
