#include "desk/host/host_interfaces.h"

namespace ventrix::desk {

HostMethodTables HostInterfaces::NewTables() {
    HostMethodTables tables;
    for (HostMethodTable& table : tables) {
        table.Set<QueryInterfaceMethod>(&QueryInterface);
        table.Set<AddRefMethod>(&AddRef);
        table.Set<ReleaseMethod>(&Release);
    }
    return tables;
}

HostInterfaces::HostInterfaces(const HostMethodTables& tables, void* host) : host_(host) {
    for (std::size_t number = 0; number < sides_.size(); ++number) {
        sides_[number] = {tables[number].Slots(), this};
    }
}

HostInterfaces& HostInterfaces::Of(void* self) {
    return *static_cast<HostInterfaces*>(static_cast<HostSide*>(self)->object);
}

void* HostInterfaces::HostOf(void* self) {
    return Of(self).host_;
}

HRESULT HostInterfaces::QueryInterface(void* self, REFIID id, void** object) {
    HostInterfaces& owner = Of(self);
    *object = nullptr;
    if (id == IID_IUnknown) {
        *object = &owner.sides_[0];
    }
    for (unsigned number = 1; number <= kHostInterfaceCount; ++number) {
        if (id == kHostInterfaceIds[number - 1]) {
            *object = &owner.sides_[number];
        }
    }
    if (*object == nullptr) {
        return E_NOINTERFACE;
    }
    ++owner.references_;
    return S_OK;
}

ULONG HostInterfaces::AddRef(void* self) {
    return static_cast<ULONG>(++Of(self).references_);
}

ULONG HostInterfaces::Release(void* self) {
    return static_cast<ULONG>(--Of(self).references_);
}

}  // namespace ventrix::desk
