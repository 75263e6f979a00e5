// Base classes of the objects that the kit hands to the component model: identity, reference count, and
// interfaces found through a virtual function. Reference counts are plain integers: an object is used on one
// thread only.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace ventrix {

/// An object that has only IUnknown. Its reference count is 1 after construction; the creator owns that
/// reference.
class ComUltraliteC : public IUnknown {
  public:
    HRESULT QueryInterface(REFIID id, void** out) override;
    ULONG AddRef() override;

    /// Deletes the object with its last reference. Returns the new count.
    ULONG Release() override;

    /// Stores the interface with this id and adds a reference; leaves `out` unchanged for an unknown id.
    virtual void FindInterface(REFIID id, void** out);

    /// Whether the last Release may delete the object. Always 1 here.
    virtual int CanDestroy();

    virtual ~ComUltraliteC() = default;

    ComUltraliteC(const ComUltraliteC&) = delete;
    ComUltraliteC& operator=(const ComUltraliteC&) = delete;

  protected:
    ComUltraliteC() = default;

  private:
    std::uint32_t referenceCount_ = 1;
};

/// The id of an interface that ImplementComC is used with.
template <class Interface>
REFIID InterfaceIdOf();
template <>
inline REFIID InterfaceIdOf<IStream>() {
    return IID_IStream;
}
template <>
inline REFIID InterfaceIdOf<IMessageFilter>() {
    return IID_IMessageFilter;
}

/// A base class with one more interface. All interfaces share the object's reference count.
template <class Interface, class Base>
class ImplementComC : public Base, public Interface {
  public:
    HRESULT QueryInterface(REFIID id, void** out) override { return Base::QueryInterface(id, out); }
    ULONG AddRef() override { return Base::AddRef(); }
    ULONG Release() override { return Base::Release(); }

    void FindInterface(REFIID id, void** out) override {
        if (id == InterfaceIdOf<Interface>()) {
            this->AddRef();
            *out = static_cast<Interface*>(this);
            return;
        }
        Base::FindInterface(id, out);
    }
};

}  // namespace ventrix
