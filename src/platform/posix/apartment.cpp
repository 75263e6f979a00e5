#include "platform/posix/apartment.h"

#include <cstdlib>
#include <utility>

namespace ventrix::platform {

Apartment::~Apartment() {
    if (filter != nullptr) {
        filter->Release();
    }
}

Apartment& CurrentApartment() {
    thread_local Apartment apartment;
    return apartment;
}

}  // namespace ventrix::platform

namespace ventrix {

using platform::Apartment;
using platform::CurrentApartment;

HRESULT CoInitialize(void* /*reserved*/) {
    return CurrentApartment().entries++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize() {
    Apartment& apartment = CurrentApartment();
    if (apartment.entries == 0 || --apartment.entries > 0) {
        return;
    }
    if (IMessageFilter* filter = std::exchange(apartment.filter, nullptr)) {
        filter->Release();
    }
}

// Host and client share the C heap.
void* CoTaskMemAlloc(std::size_t size) {
    return std::malloc(size == 0 ? 1 : size);
}

void CoTaskMemFree(void* block) {
    std::free(block);
}

HRESULT CoDisconnectObject(IUnknown* /*object*/, DWORD /*reserved*/) {
    return S_OK;
}

HRESULT CoRegisterMessageFilter(IMessageFilter* filter, IMessageFilter** former) {
    if (former != nullptr) {
        *former = nullptr;
    }
    Apartment& apartment = CurrentApartment();
    if (apartment.entries == 0) {
        return CO_E_NOTINITIALIZED;
    }
    if (filter != nullptr) {
        filter->AddRef();
    }
    IMessageFilter* replaced = std::exchange(apartment.filter, filter);
    if (former != nullptr) {
        *former = replaced;
    } else if (replaced != nullptr) {
        replaced->Release();
    }
    return S_OK;
}

}  // namespace ventrix
