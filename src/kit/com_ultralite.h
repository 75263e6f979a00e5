// The base of every object that the kit shows to the platform's component model: identity, reference count,
// and interfaces found by a virtual question. Counts are plain integers: an object lives on one thread.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace ventrix {

/// An object with the one interface IUnknown. Its count is 1 at construction; the creator owns that
/// reference.
class ComUltraliteC : public IUnknown {
  public:
    HRESULT QueryInterface(REFIID id, void** out) override;
    ULONG AddRef() override;

    /// Frees the object with its last reference. The new count.
    ULONG Release() override;

    /// Stores the side of the object that has the id and adds a reference; leaves out alone for an unknown
    /// id.
    virtual void FindInterface(REFIID id, void** out);

    /// Whether the last reference may free the object: 1 in every class here.
    virtual int CanDestroy();

    virtual ~ComUltraliteC() = default;

    ComUltraliteC(const ComUltraliteC&) = delete;
    ComUltraliteC& operator=(const ComUltraliteC&) = delete;

  protected:
    ComUltraliteC() = default;

  private:
    std::uint32_t referenceCount_ = 1;
};

/// The interface id of an interface that ImplementComC is used with.
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

/// A base class with one more interface. All sides share the object's one count.
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
