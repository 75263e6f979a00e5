#include "platform/com.h"

#include "platform/win32/system_calls.h"

#include <objbase.h>

// The types of com.h have the layouts of the system's, so that pointers to them are passed on as they are.

namespace ventrix {
namespace {

static_assert(sizeof(GUID) == sizeof(::GUID) && sizeof(MULTI_QI) == sizeof(::MULTI_QI) &&
              sizeof(COSERVERINFO) == sizeof(::COSERVERINFO) && sizeof(STATSTG) == sizeof(::STATSTG));

template <typename To, typename From>
To As(From pointer) {
    return reinterpret_cast<To>(pointer);
}

const ::GUID& SystemId(const GUID& id) {
    return reinterpret_cast<const ::GUID&>(id);
}

::MSG SystemMessage(const MSG& message) {
    ::MSG system = {};
    system.hwnd = static_cast<::HWND>(message.hwnd);
    system.message = message.message;
    system.wParam = message.wParam;
    system.lParam = message.lParam;
    return system;
}

}  // namespace

HRESULT CoInitialize(void* reserved) {
    return ::CoInitialize(reserved);
}

void CoUninitialize() {
    ::CoUninitialize();
}

void* CoTaskMemAlloc(std::size_t size) {
    return ::CoTaskMemAlloc(size);
}

void CoTaskMemFree(void* block) {
    ::CoTaskMemFree(block);
}

HRESULT CoDisconnectObject(IUnknown* object, DWORD reserved) {
    return ::CoDisconnectObject(As<::IUnknown*>(object), reserved);
}

HRESULT CoRegisterMessageFilter(IMessageFilter* filter, IMessageFilter** former) {
    return ::CoRegisterMessageFilter(As<::IMessageFilter*>(filter), As<::IMessageFilter**>(former));
}

HRESULT CLSIDFromString(const OLECHAR* text, CLSID* id) {
    return ::CLSIDFromString(As<const wchar_t*>(text), As<::CLSID*>(id));
}

HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId,
                         void** object) {
    return ::CoCreateInstance(SystemId(classId), As<::IUnknown*>(outer), context, SystemId(interfaceId),
                              object);
}

BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last) {
    ::MSG system = {};
    const BOOL result = ::GetMessageW(&system, static_cast<::HWND>(window), first, last);
    *message = {system.hwnd, system.message, system.wParam, system.lParam};
    return result;
}

BOOL TranslateMessage(const MSG* message) {
    const ::MSG system = SystemMessage(*message);
    return ::TranslateMessage(&system);
}

LRESULT DispatchMessageW(const MSG* message) {
    const ::MSG system = SystemMessage(*message);
    return ::DispatchMessageW(&system);
}

void PostQuitMessage(int exitCode) {
    ::PostQuitMessage(exitCode);
}

}  // namespace ventrix
