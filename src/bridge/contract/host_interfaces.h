// The host's side of the contract: the entry point of a client module, the 18 interfaces of the host's root
// object, and the methods that a client calls on them.
//
// Interfaces have no names, only numbers from 1 to 18. A method is identified by the number of its interface
// and its index in the method table (0 to 2 are IUnknown's). Strings are null-terminated, in the connection's
// text mode. Arguments stay the caller's. What a method hands out is in task memory (CoTaskMemAlloc), each
// string and array in a block of its own; the client frees it unless the host owns results. A busy host
// returns RPC_E_SERVERCALL_RETRYLATER.
#pragma once

#include <cstdint>

#include "bridge/contract/properties.h"
#include "bridge/contract/values.h"
#include "platform/com.h"

namespace ventrix {

/// A client module's only export. `keepAlive`, unless null, is held until the connection ends. If
/// `description` is null, the module reads its own from its version block. 0 if connected, else -1.
using ClientInitEntry = std::int32_t(void* module, IUnknown* root, IUnknown* keepAlive,
                                     const Q_PropList* description);
constexpr char kClientInitEntryName[] = "Q_ApiClientInit";

constexpr unsigned kHostInterfaceCount = 18;

/// The interface ids, in the order in which a client asks for them. Interface n is at index n - 1. Without
/// interface 4 there is no connection, and a client does not ask for 16 to 18.
inline constexpr GUID kHostInterfaceIds[kHostInterfaceCount] = {
    {0x9EB9EBDE, 0xEF45, 0x4FAA, {0xBA, 0x83, 0x80, 0xC3, 0x7E, 0x74, 0x6D, 0xD7}},
    {0xF9EDAC1F, 0x75C2, 0x4544, {0xA6, 0x5E, 0x36, 0xE3, 0xC5, 0xA4, 0xDB, 0xA1}},
    {0x755FF112, 0x0DD6, 0x4947, {0xBD, 0xCC, 0xD3, 0x22, 0x28, 0x31, 0x39, 0xA7}},
    {0xCA913130, 0x7B0A, 0x11D0, {0x98, 0x5E, 0x00, 0x60, 0x97, 0x0B, 0xEC, 0x0B}},
    {0x5B0455F0, 0x0DB8, 0x11D1, {0x98, 0x6D, 0x00, 0x60, 0x97, 0x0B, 0xEC, 0x0B}},
    {0xEA34B890, 0x2289, 0x11D3, {0xBC, 0x05, 0x00, 0x80, 0x5F, 0xD9, 0x83, 0x89}},
    {0x895D2502, 0x96ED, 0x43E1, {0xA8, 0x8B, 0x45, 0x78, 0xA1, 0xAA, 0xA2, 0xB5}},
    {0xF8A1A179, 0xB5C9, 0x4AF8, {0x8E, 0x1A, 0xDA, 0x71, 0x43, 0x0E, 0xDB, 0xA1}},
    {0x02AC84A3, 0x499F, 0x4128, {0x93, 0x62, 0x0E, 0x38, 0xBB, 0x16, 0x20, 0xC9}},
    {0xB2159D69, 0xA7F0, 0x4978, {0x84, 0xA3, 0xC2, 0xCA, 0x54, 0x98, 0xF9, 0xFE}},
    {0xA76BE1F8, 0xB073, 0x4F2D, {0x95, 0x53, 0x98, 0x54, 0x38, 0x54, 0xE0, 0xFB}},
    {0x9D1E44A4, 0x9CCC, 0x4AB5, {0xB5, 0x55, 0x6F, 0xFA, 0xE7, 0x78, 0x34, 0x2C}},
    {0xEC7B1498, 0xED2D, 0x4278, {0xAE, 0x91, 0x07, 0x48, 0x1B, 0xCB, 0xBF, 0xD0}},
    {0xB550535A, 0xBAA1, 0x4274, {0x9D, 0x2C, 0x41, 0xB6, 0x0F, 0x18, 0x35, 0xB8}},
    {0x00F4DCB5, 0x4CAE, 0x4ACC, {0x8A, 0x3D, 0x5D, 0x27, 0x6E, 0x90, 0x28, 0xBB}},
    {0x04C8B860, 0xBC3B, 0x11D0, {0x8E, 0x04, 0x44, 0x45, 0x53, 0x54, 0x00, 0x00}},
    {0xF5AE87C2, 0x3FF6, 0x11D1, {0x94, 0x57, 0x00, 0x80, 0x5F, 0x29, 0x2B, 0x02}},
    {0xE1E9B610, 0x97D0, 0x11D3, {0xBC, 0x10, 0x00, 0x80, 0x5F, 0xD9, 0x83, 0x89}},
};

constexpr unsigned kMainHostInterface = 4;

/// Number of slots that a method table needs for any of the methods below.
constexpr unsigned kHostMethodSlots = 98;

/// Default class id of a running host, for a client in its own process.
inline constexpr GUID kHostClassId = {
    0x539DB5D0, 0xC0C6, 0x11D0, {0x98, 0x5E, 0x00, 0x60, 0x97, 0x0B, 0xEC, 0x0B}};

/// The word that the kit passes at registration.
constexpr std::uint32_t kRegistrationWord = 0x18000000;

/// Registers a client with its notification object, kRegistrationWord and its description. The connection
/// lasts as long as the host holds a reference to the object.
struct RegisterClientMethod {
    static constexpr unsigned kInterfaceNumber = 4, kIndex = 3;
    using Type = HRESULT(void* self, IUnknown* notifications, std::uint32_t word,
                         const Q_PropList* description);
};

/// Starts (state 1) or stops the delivery of a notification number to the client's Notify.
struct WatchNotificationMethod {
    static constexpr unsigned kInterfaceNumber = 4, kIndex = 8;
    using Type = HRESULT(void* self, std::int32_t number, std::int32_t state, std::int32_t* status);
};

/// Calls another client by name with one command; returns when that client has finished.
struct InvokeClientMethod {
    static constexpr unsigned kInterfaceNumber = 4, kIndex = 9;
    using Type = HRESULT(void* self, const char* clientName, const char* command, std::int32_t* status,
                         std::int32_t* answer);
};

/// Writes a string to the host's console.
struct WriteConsoleMethod {
    static constexpr unsigned kInterfaceNumber = 4, kIndex = 24;
    using Type = HRESULT(void* self, const char* text, std::int32_t* status);
};

/// Opens a document under an open script. Hands out its id, 0 if it did not open, and the list of open
/// results.
struct OpenDocumentMethod {
    static constexpr unsigned kInterfaceNumber = 4, kIndex = 32;
    using Type = HRESULT(void* self, const char* path, const Q_PropList* script, std::int32_t* status,
                         std::uint32_t* objectId, Q_PropList* results);
};

struct CloseDocumentMethod {
    static constexpr unsigned kInterfaceNumber = 4, kIndex = 35;
    using Type = HRESULT(void* self, std::uint32_t objectId, std::int32_t flags, std::int32_t* status);
};

/// String properties that a client reads: of the host application (object 0), and of a document.
constexpr std::int32_t kInstallationFolderProperty = 89;  ///< Without a backslash at the end.
constexpr std::int32_t kDocumentPathProperty = 20;

/// Number of the client's name in its description.
constexpr std::int32_t kClientNameProperty = 2;

/// Reads a string property of an object. Owner 0 with object 0 is the host application.
struct ReadStringPropMethod {
    static constexpr unsigned kInterfaceNumber = 4, kIndex = 97;
    using Type = HRESULT(void* self, std::uint32_t ownerId, std::uint32_t objectId,
                         const Q_PropIdent* property, std::int32_t* status, char** text);
};

/// Lists the files that a document refers to: for each a value of tag 20 with a key, a path, and a number
/// that is not 0 if the file has unsaved changes.
struct ListDocumentFilesMethod {
    static constexpr unsigned kInterfaceNumber = 1, kIndex = 18;
    using Type = HRESULT(void* self, std::uint32_t objectId, std::int32_t selector, std::int32_t third,
                         Q_ValueList* files);
};

/// Sets the encoding of strings in both directions; 1 is UTF-8.
struct SetTextModeMethod {
    static constexpr unsigned kInterfaceNumber = 9, kIndex = 3;
    using Type = HRESULT(void* self, std::int32_t mode, std::int32_t* status);
};

/// As InvokeClientMethod, for a client that replies with a value list.
struct InvokeClientForValuesMethod {
    static constexpr unsigned kInterfaceNumber = 12, kIndex = 23;
    using Type = HRESULT(void* self, const char* clientName, const char* command, std::int32_t* status,
                         Q_ValueList* answer);
};

/// Called while Notify handles a client call: passes on the list that the calling client receives.
struct SendCallReplyMethod {
    static constexpr unsigned kInterfaceNumber = 12, kIndex = 24;
    using Type = HRESULT(void* self, const Q_ValueList* reply, Q_ValueList* back);
};

/// Called once, with the argument 1. The result 0 means that the host frees what it hands out, any other
/// result that the client does.
struct HostOwnsResultsMethod {
    static constexpr unsigned kInterfaceNumber = 16, kIndex = 3;
    using Type = HRESULT(void* self, std::int32_t argument);
};

/// Gives the host the client's module handle.
struct TakeModuleHandleMethod {
    static constexpr unsigned kInterfaceNumber = 17, kIndex = 3;
    using Type = HRESULT(void* self, void* module);
};

static_assert(sizeof(HRESULT) == 4 && sizeof(GUID) == 16);

}  // namespace ventrix
