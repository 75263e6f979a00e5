// The part of the component model that this system uses, with the names, layouts and rules of the platform
// that it comes from. The method tables are a binary contract: an interface has exactly these methods in this
// order, and no virtual destructor. Strings are UTF-16.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ventrix {

using HRESULT = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using BOOL = std::int32_t;
using WORD = std::uint16_t;
using OLECHAR = char16_t;
using HTASK = void*;
using HWND = void*;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;

/// The result code with this bit pattern.
constexpr HRESULT MakeResult(std::uint32_t bits) {
    return static_cast<HRESULT>(bits);
}
constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
    return result < 0;
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT CO_S_NOTALLINTERFACES = 0x00080012;
inline constexpr HRESULT E_NOTIMPL = MakeResult(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = MakeResult(0x80004002);
inline constexpr HRESULT E_POINTER = MakeResult(0x80004003);
inline constexpr HRESULT E_FAIL = MakeResult(0x80004005);
inline constexpr HRESULT E_INVALIDARG = MakeResult(0x80070057);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = MakeResult(0x80040110);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = MakeResult(0x80040154);
inline constexpr HRESULT CO_E_NOTINITIALIZED = MakeResult(0x800401F0);
inline constexpr HRESULT CO_E_CLASSSTRING = MakeResult(0x800401F3);
inline constexpr HRESULT RPC_E_CALL_REJECTED = MakeResult(0x80010001);
inline constexpr HRESULT RPC_E_SERVERCALL_RETRYLATER = MakeResult(0x8001010A);
inline constexpr HRESULT RPC_S_SERVER_UNAVAILABLE_RESULT = MakeResult(0x800706BA);

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];

    friend constexpr bool operator==(const GUID&, const GUID&) = default;
};
static_assert(sizeof(GUID) == 16);

using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        LONG HighPart;
    } u;
    std::int64_t QuadPart;
};

union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    std::uint64_t QuadPart;
};

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct STATSTG {
    OLECHAR* pwcsName;
    DWORD type;
    ULARGE_INTEGER cbSize;
    FILETIME mtime;
    FILETIME ctime;
    FILETIME atime;
    DWORD grfMode;
    DWORD grfLocksSupported;
    CLSID clsid;
    DWORD grfStateBits;
    DWORD reserved;
};
static_assert(sizeof(STATSTG) == 80 && offsetof(STATSTG, cbSize) == 16 && offsetof(STATSTG, clsid) == 56);

inline constexpr DWORD STGTY_STREAM = 2;
inline constexpr DWORD STREAM_SEEK_SET = 0;
inline constexpr DWORD STREAM_SEEK_CUR = 1;
inline constexpr DWORD STREAM_SEEK_END = 2;

inline constexpr DWORD SERVERCALL_ISHANDLED = 0;
inline constexpr DWORD SERVERCALL_REJECTED = 1;
inline constexpr DWORD SERVERCALL_RETRYLATER = 2;
inline constexpr DWORD PENDINGMSG_WAITDEFPROCESS = 2;

inline constexpr DWORD CLSCTX_INPROC_SERVER = 0x1;
inline constexpr DWORD CLSCTX_LOCAL_SERVER = 0x4;
inline constexpr DWORD CLSCTX_REMOTE_SERVER = 0x10;

class IUnknown {
  public:
    virtual HRESULT QueryInterface(REFIID id, void** object) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;
};

class ISequentialStream : public IUnknown {
  public:
    virtual HRESULT Read(void* buffer, ULONG count, ULONG* read) = 0;
    virtual HRESULT Write(const void* bytes, ULONG count, ULONG* written) = 0;
};

class IStream : public ISequentialStream {
  public:
    virtual HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) = 0;
    virtual HRESULT SetSize(ULARGE_INTEGER size) = 0;
    virtual HRESULT CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                           ULARGE_INTEGER* written) = 0;
    virtual HRESULT Commit(DWORD flags) = 0;
    virtual HRESULT Revert() = 0;
    virtual HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD kind) = 0;
    virtual HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD kind) = 0;
    virtual HRESULT Stat(STATSTG* record, DWORD flags) = 0;
    virtual HRESULT Clone(IStream** stream) = 0;
};

struct INTERFACEINFO {
    IUnknown* pUnk;
    IID iid;
    WORD wMethod;
};

class IMessageFilter : public IUnknown {
  public:
    virtual DWORD HandleInComingCall(DWORD callType, HTASK caller, DWORD tickCount, INTERFACEINFO* info) = 0;
    virtual DWORD RetryRejectedCall(HTASK callee, DWORD elapsed, DWORD rejectType) = 0;
    virtual DWORD MessagePending(HTASK callee, DWORD elapsed, DWORD pendingType) = 0;
};

inline constexpr IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IStream = {0x0000000C, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IMessageFilter = {0x00000016, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// Enters this thread's apartment. S_OK for the first entry, S_FALSE for a further one. Every entry needs a
/// CoUninitialize.
HRESULT CoInitialize(void* reserved);

/// Ends one entry. Ending the last one releases the thread's message filter. Without an entry nothing
/// happens.
void CoUninitialize();

/// Allocates a block that host and client may pass to each other. A size of 0 gives a block too. Null when
/// memory runs out. Freeing null is allowed.
void* CoTaskMemAlloc(std::size_t size);
void CoTaskMemFree(void* block);

/// Ends an object's connections to other processes; there are none here. Always S_OK.
HRESULT CoDisconnectObject(IUnknown* object, DWORD reserved);

/// Sets the thread's message filter and adds a reference to it; null removes the filter. The former filter is
/// stored in `former` with its reference, or released if `former` is null. Outside an apartment nothing
/// changes: CO_E_NOTINITIALIZED.
HRESULT CoRegisterMessageFilter(IMessageFilter* filter, IMessageFilter** former);

/// Reads a class id such as "{539DB5D0-C0C6-11D0-985E-0060970BEC0B}", in either case. CO_E_CLASSSTRING for
/// text of any other form; null gives the id of zeros and S_OK.
HRESULT CLSIDFromString(const OLECHAR* text, CLSID* id);

/// Creates an object of a class that OfferClass (com_runtime.h) offers, and stores the interface with a
/// reference. REGDB_E_CLASSNOTREG for an unknown class, CO_E_NOTINITIALIZED outside an apartment,
/// CLASS_E_NOAGGREGATION if `outer` is not null, E_NOINTERFACE. On failure `*object` is null.
HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId, void** object);

struct COSERVERINFO {
    DWORD dwReserved1;
    OLECHAR* pwszName;
    void* pAuthInfo;
    DWORD dwReserved2;
};

struct MULTI_QI {
    const IID* pIID;
    IUnknown* pItf;
    HRESULT hr;
};

/// The type of CoCreateInstanceEx, which is looked up by name in "ole32.dll" (library.h). It fills in every
/// query record. S_OK if the object has all interfaces, CO_S_NOTALLINTERFACES if some, E_NOINTERFACE if none,
/// else the error of the activation; RPC_S_SERVER_UNAVAILABLE_RESULT for an unknown server.
using CoCreateInstanceExFunction = HRESULT(REFCLSID classId, IUnknown* outer, DWORD context,
                                           COSERVERINFO* server, DWORD count, MULTI_QI* results);

inline constexpr UINT WM_QUIT = 0x0012;

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
};

/// Waits for the next message in this thread's queue. 0 for the quit message, which is delivered after all
/// others; else 1. The window and the message range are ignored.
BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last);

/// Translates key messages to characters; there are none here. Always 0.
BOOL TranslateMessage(const MSG* message);

/// Runs the work that the message carries. Always 0.
LRESULT DispatchMessageW(const MSG* message);

/// Posts the quit message to this thread's queue. It is delivered after everything else.
void PostQuitMessage(int exitCode);

}  // namespace ventrix
