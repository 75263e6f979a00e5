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

/// The registered filter can only be had by replacing it. One that other code has registered since is put
/// back.
void RevokeFilter() {
    IMessageFilter* registered = nullptr;
    CoRegisterMessageFilter(nullptr, &registered);
    if (registered != nullptr && registered != connection.messageFilter) {
        CoRegisterMessageFilter(registered, nullptr);
    }
    if (registered != nullptr) {
        registered->Release();
    }
}

}  // namespace

void EnterApartment() {
    connection.leavesAfterCall = false;
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
    connection.leavesAfterCall = connection.openCalls > 0;
    if (connection.leavesAfterCall) {
        return;
    }
    if (connection.messageFilter != nullptr) {
        // Before the apartment is left: after that the platform would keep the filter.
        RevokeFilter();
        ReleaseFilter();
    }
    if (std::exchange(connection.apartmentOwned, false)) {
        CoUninitialize();
    }
}

}  // namespace ventrix
