// One call on a host interface, by the contract's method record: the missing interface, the failed call and
// the reported status become the kit's error value here and nowhere else.
#pragma once

#include <cstdint>

#include "bridge/connection.h"
#include "bridge/contract/host_interfaces.h"
#include "platform/com.h"
#include "platform/com_runtime.h"

namespace ventrix {

/// False for a negative result code: sets Q_ApiLastError to -88 for a busy host, else to -1.
bool AcceptHostResult(HRESULT result);

/// False for a status that is not 0, which goes to Q_ApiLastError.
bool AcceptHostStatus(std::int32_t status);

/// Calls the method of an interface that is held. The platform's result.
template <class Method, class... Arguments>
HRESULT CallMethod(IUnknown* side, Arguments... arguments) {
    void* const* methods = *reinterpret_cast<void* const* const*>(side);
    auto* function = reinterpret_cast<typename Method::Type*>(methods[Method::index]);
    return function(side, arguments...);
}

/// Whether the call, or one that the message filter asked for after it, reached the host and came back. On
/// false Q_ApiLastError is set and out-arguments may hold anything that the host wrote.
template <class Method, class... Arguments>
bool CallHost(Arguments... arguments) {
    IUnknown* side = HostInterface(Method::interfaceNumber);
    if (side == nullptr) {
        return AcceptHostResult(E_NOINTERFACE);
    }
    return AcceptHostResult(platform::CallServer([&] { return CallMethod<Method>(side, arguments...); }));
}

}  // namespace ventrix
