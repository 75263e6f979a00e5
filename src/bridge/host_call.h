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

/// Keeps an interface alive during a call: while the call waits, the thread serves calls of the host, which
/// may end the connection. An apartment that is to be left meanwhile is left when the outermost call has
/// returned.
class HostCallScope {
  public:
    explicit HostCallScope(IUnknown* target);
    ~HostCallScope();
    HostCallScope(const HostCallScope&) = delete;
    HostCallScope& operator=(const HostCallScope&) = delete;

  private:
    IUnknown* target_;
};

/// Calls a method of the host. While the host is busy, repeats the call for as long as the thread's message
/// filter asks for it and the connection has the interface. Returns the result of the last attempt;
/// E_NOINTERFACE for an interface that the connection does not have, or no longer has.
template <class Method, class... Arguments>
HRESULT CallMethod(Arguments... arguments) {
    IUnknown* target = HostInterface(Method::kInterfaceNumber);
    if (target == nullptr) {
        return E_NOINTERFACE;
    }
    const HostCallScope scope(target);
    void* const* methods = *reinterpret_cast<void* const* const*>(target);
    auto* function = reinterpret_cast<typename Method::Type*>(methods[Method::kIndex]);
    return platform::CallServer([&] {
        return HostInterface(Method::kInterfaceNumber) == target ? function(target, arguments...)
                                                                 : E_NOINTERFACE;
    });
}

/// Whether the host executed the call. If not, Q_ApiLastError is set, and out-arguments may hold whatever the
/// host wrote to them.
template <class Method, class... Arguments>
bool CallHost(Arguments... arguments) {
    return AcceptHostResult(CallMethod<Method>(arguments...));
}

}  // namespace ventrix
