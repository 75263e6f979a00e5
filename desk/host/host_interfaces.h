// The desk host's component side: a root object that answers for the 18 interfaces. Their method tables are
// plain arrays, in which every slot that no client calls answers E_NOTIMPL.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <set>

#include "bridge/contract/host_interfaces.h"
#include "bridge/contract/method_table.h"
#include "platform/com.h"

namespace ventrix::desk {

class HostSides;

/// What a client holds as an interface pointer. Side 0 is the root object, side n interface number n.
struct HostSide {
    void* const* methods;
    HostSides* owner;
    unsigned number;
};

/// The method table of one interface, with IUnknown's three methods set.
struct HostMethodTable : ventrix::HostMethodTable {
    HostMethodTable();
};

/// The 19 sides of one host. The host outlives every reference to them.
class HostSides {
  public:
    /// The tables stand at index interface number; `host` is what ContextOf gives back.
    HostSides(const std::array<HostMethodTable, kHostInterfaceCount + 1>& tables, void* host,
              std::set<unsigned> missing);

    IUnknown* Root();
    int References() const { return references_; }

    /// The host behind the self argument of a method.
    static void* ContextOf(void* self);

    static HRESULT QueryInterface(void* self, REFIID id, void** object);
    static ULONG AddRef(void* self);
    static ULONG Release(void* self);

  private:
    std::array<HostSide, kHostInterfaceCount + 1> sides_{};
    std::set<unsigned> missing_;
    void* host_;
    int references_ = 0;
};

}  // namespace ventrix::desk
