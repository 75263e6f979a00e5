// A call on a host interface, described by a method record of the contract. Only this component turns a
// missing interface, a failed call or a status into the kit's error value.
#pragma once

#include <cstdint>

#include "bridge/connection.h"
#include "bridge/contract/host_interfaces.h"
#include "platform/com.h"
#include "platform/server_call.h"

namespace ventrix {

/// True unless the result code is negative. Then sets Q_ApiLastError: -88 for a busy host, else -1.
bool AcceptHostResult(HRESULT result);

/// True for status 0. Otherwise sets Q_ApiLastError to the status.
bool AcceptHostStatus(std::int32_t status);

/// Calls the method of an interface that is not null. While the host is busy, repeats the call for as long as
/// the thread's message filter asks for it. Returns the result of the last attempt.
template <class Method, class... Arguments>
HRESULT CallMethod(IUnknown* target, Arguments... arguments) {
    void* const* methods = *reinterpret_cast<void* const* const*>(target);
    auto* function = reinterpret_cast<typename Method::Type*>(methods[Method::kIndex]);
    return platform::CallServer([&] { return function(target, arguments...); });
}

/// Whether the host executed the call. If not, Q_ApiLastError is set, and out-arguments may hold whatever the
/// host wrote to them.
template <class Method, class... Arguments>
bool CallHost(Arguments... arguments) {
    IUnknown* target = HostInterface(Method::kInterfaceNumber);
    // A missing interface counts as a failed call; any code but that of a busy host gives -1.
    return AcceptHostResult(target == nullptr ? E_NOINTERFACE : CallMethod<Method>(target, arguments...));
}

}  // namespace ventrix
