#include "desk/host/host_interfaces.h"

#include <utility>

namespace ventrix::desk {
namespace {

HostSides& OwnerOf(void* self) {
    return *static_cast<HostSide*>(self)->owner;
}

}  // namespace

HostMethodTable::HostMethodTable() {
    Set<QueryInterfaceMethod>(&HostSides::QueryInterface);
    Set<AddRefMethod>(&HostSides::AddRef);
    Set<ReleaseMethod>(&HostSides::Release);
}

HostSides::HostSides(const std::array<HostMethodTable, kHostInterfaceCount + 1>& tables, void* host,
                     std::set<unsigned> missing)
    : missing_(std::move(missing)), host_(host) {
    for (unsigned number = 0; number < sides_.size(); ++number) {
        sides_[number] = {tables[number].Slots(), this, number};
    }
}

IUnknown* HostSides::Root() {
    return reinterpret_cast<IUnknown*>(&sides_[0]);
}

void* HostSides::ContextOf(void* self) {
    return OwnerOf(self).host_;
}

HRESULT HostSides::QueryInterface(void* self, REFIID id, void** object) {
    HostSides& owner = OwnerOf(self);
    *object = nullptr;
    if (id == IID_IUnknown) {
        *object = &owner.sides_[0];
    }
    for (unsigned number = 1; number <= kHostInterfaceCount; ++number) {
        if (id == kHostInterfaceIds[number - 1] && !owner.missing_.contains(number)) {
            *object = &owner.sides_[number];
        }
    }
    if (*object == nullptr) {
        return E_NOINTERFACE;
    }
    ++owner.references_;
    return S_OK;
}

ULONG HostSides::AddRef(void* self) {
    return static_cast<ULONG>(++OwnerOf(self).references_);
}

ULONG HostSides::Release(void* self) {
    return static_cast<ULONG>(--OwnerOf(self).references_);
}

}  // namespace ventrix::desk
