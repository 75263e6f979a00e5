// Method tables for host objects. They are plain arrays of functions and not classes, since the host's
// interfaces have no names and clients call few of their methods. A slot that is not set returns E_NOTIMPL. A
// host makes one table for each interface, sets IUnknown's three methods and the methods that it offers, and
// hands out a HostSide as interface pointer.
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

/// The method table of one interface. It must outlive each HostSide that refers to it.
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

    // A table that the compiler generates is preceded by the offset to the complete object and the object's
    // type. Sanitizers read both.
    [[maybe_unused]] std::intptr_t offsetToWhole_ = 0;
    [[maybe_unused]] const std::type_info* type_ = &typeid(IUnknown);
    void* slots_[kHostMethodSlots];
};

/// One interface of a host object. A client uses its address as an interface pointer, and each method
/// receives that address as `self`.
struct HostSide {
    void* const* methods;  ///< HostMethodTable::Slots of the interface.
    void* object;          ///< The object that implements the interface.

    IUnknown* AsUnknown() { return reinterpret_cast<IUnknown*>(this); }
};

}  // namespace ventrix
