// One call on a host interface, by the contract's method record: the missing interface, the failed call and
// the reported status become the kit's error value here and nowhere else.
#pragma once

#include <cstdint>

#include "bridge/connection.h"
#include "bridge/contract/host_interfaces.h"
#include "platform/com.h"
#include "platform/server_call.h"

namespace ventrix {

/// False for a negative result code: sets Q_ApiLastError to -88 for a busy host, else to -1.
bool AcceptHostResult(HRESULT result);

/// False for a status that is not 0, which goes to Q_ApiLastError.
bool AcceptHostStatus(std::int32_t status);

/// Calls the method of an interface that is held; again while the host is busy and the thread's message
/// filter says so. The platform's result of the last attempt.
template <class Method, class... Arguments>
HRESULT CallMethod(IUnknown* side, Arguments... arguments) {
    void* const* methods = *reinterpret_cast<void* const* const*>(side);
    auto* function = reinterpret_cast<typename Method::Type*>(methods[Method::kIndex]);
    return platform::CallServer([&] { return function(side, arguments...); });
}

/// Whether the call reached the host and came back. On false Q_ApiLastError is set and out-arguments may hold
/// anything that the host wrote.
template <class Method, class... Arguments>
bool CallHost(Arguments... arguments) {
    IUnknown* side = HostInterface(Method::kInterfaceNumber);
    // The code of a missing interface: any failure but that of a busy host.
    return AcceptHostResult(side == nullptr ? E_NOINTERFACE : CallMethod<Method>(side, arguments...));
}

}  // namespace ventrix
