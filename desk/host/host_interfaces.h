// The desk host as the component model sees it: a root object and its 18 interfaces, which all belong to one
// object and share one reference count.
#pragma once

#include <array>

#include "bridge/contract/host_interfaces.h"
#include "bridge/contract/method_table.h"
#include "platform/com.h"

namespace ventrix::desk {

/// The root object's method table at 0, that of interface n at n.
using HostMethodTables = std::array<HostMethodTable, kHostInterfaceCount + 1>;

/// The interfaces of one host. The host must outlive every reference to them.
class HostInterfaces {
  public:
    /// Tables in which only IUnknown's methods are set.
    static HostMethodTables NewTables();

    /// The tables must outlive this object. HostOf returns `host`.
    HostInterfaces(const HostMethodTables& tables, void* host);

    /// The root object. The reference stays this object's.
    IUnknown* Root() { return sides_[0].AsUnknown(); }

    /// References that clients hold now.
    int References() const { return references_; }

    /// The host to which the `self` argument of a method belongs.
    static void* HostOf(void* self);

  private:
    static HostInterfaces& Of(void* self);
    static HRESULT QueryInterface(void* self, REFIID id, void** object);
    static ULONG AddRef(void* self);
    static ULONG Release(void* self);

    std::array<HostSide, kHostInterfaceCount + 1> sides_{};
    void* host_;
    int references_ = 0;
};

}  // namespace ventrix::desk
