#include "kit/com_ultralite.h"

namespace ventrix {

HRESULT ComUltraliteC::QueryInterface(REFIID id, void** out) {
    *out = nullptr;
    FindInterface(id, out);
    return *out != nullptr ? S_OK : E_NOINTERFACE;
}

ULONG ComUltraliteC::AddRef() {
    return ++referenceCount_;
}

ULONG ComUltraliteC::Release() {
    if (--referenceCount_ != 0) {
        return referenceCount_;
    }
    // A destructor may take and release references to the object; that must not delete it a second time.
    constexpr std::uint32_t kWhileDestroyed = 100;
    referenceCount_ = kWhileDestroyed;
    if (CanDestroy() != 0) {
        delete this;
        return 0;
    }
    referenceCount_ -= kWhileDestroyed;
    return 0;
}

void ComUltraliteC::FindInterface(REFIID id, void** out) {
    if (id == IID_IUnknown) {
        AddRef();
        *out = static_cast<IUnknown*>(this);
    }
}

int ComUltraliteC::CanDestroy() {
    return 1;
}

}  // namespace ventrix
