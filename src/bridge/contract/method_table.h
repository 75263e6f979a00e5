// Method tables for host objects: plain arrays of functions, since the interfaces of the host have no names
// and few of their methods are ever called. Every slot that is not set answers 0x80004001. A host writes one
// table per interface number, sets IUnknown's three slots and the methods that it has, and hands out sides.
#pragma once

#include <cstdint>
#include <typeinfo>

#include "bridge/contract/host_interfaces.h"
#include "platform/com.h"

namespace ventrix {

/// The methods of IUnknown, in slot order.
struct QueryInterfaceMethod {
    static constexpr unsigned kIndex = 0;
    using Type = HRESULT(void* self, REFIID id, void** out);
};
struct AddRefMethod {
    static constexpr unsigned kIndex = 1;
    using Type = ULONG(void* self);
};
struct ReleaseMethod {
    static constexpr unsigned kIndex = 2;
    using Type = ULONG(void* self);
};

/// One method table. It lives as long as any side that points at its slots.
class HostMethodTable {
  public:
    HostMethodTable() {
        for (void*& slot : slots_) {
            slot = reinterpret_cast<void*>(&NotOffered);
        }
    }

    /// Sets the slot of Method, one of the method records of the contract.
    template <class Method>
    void Set(typename Method::Type* function) {
        slots_[Method::kIndex] = reinterpret_cast<void*>(function);
    }

    void* const* Slots() const { return slots_; }

  private:
    static HRESULT NotOffered(void*) { return E_NOTIMPL; }

    // What stands before a table that the compiler makes: offset to the whole object, and its type. Checked
    // builds look at both.
    std::intptr_t offsetToWhole_ = 0;
    const std::type_info* type_ = &typeid(IUnknown);
    void* slots_[kHostMethodSlots];
};

/// One interface side of a host object, which a client sees as an IUnknown. self of a method is the address
/// of its side.
struct HostSide {
    void* const* methods;  ///< A table's slots.
    void* object;          ///< The object that the side belongs to.

    IUnknown* AsUnknown() { return reinterpret_cast<IUnknown*>(this); }
};

}  // namespace ventrix
