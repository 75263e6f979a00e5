// The smallest host: loads the module, opens one document, sends a Validate and a Publish, and prints the
// replies.
//   minimal_host MODULE DOCUMENT OUTPUT-FOLDER LOG
// MODULE is a native path, the others are in system notation (C:\docs\guide.xml). The document refers to no
// other file, and the Publish only packages it: this host has no client that transforms.
#include <array>
#include <cstdio>
#include <cstring>
#include <string>

#include "bridge/contract/host_interfaces.h"
#include "bridge/contract/method_table.h"
#include "bridge/contract/notification_interfaces.h"
#include "bridge/contract/request.h"
#include "platform/library.h"
#include "platform/standard_streams.h"

namespace {

using namespace ventrix;

constexpr std::uint32_t kDocumentId = 1;

struct Host {
    std::string document;
    IQuorlaneNotifications0* client = nullptr;  ///< Owns a reference, which keeps the client connected.
    std::array<HostSide, kHostInterfaceCount + 1> sides = {};  ///< The root object at 0, interface n at n.
};

Host& HostOf(void* self) {
    return *static_cast<Host*>(static_cast<HostSide*>(self)->object);
}

/// What a host hands out is in task memory.
char* TaskText(const std::string& text) {
    return static_cast<char*>(std::memcpy(CoTaskMemAlloc(text.size() + 1), text.c_str(), text.size() + 1));
}

// --- the methods that a request needs ---

HRESULT QueryInterface(void* self, REFIID id, void** out) {
    *out = nullptr;
    for (unsigned number = 0; number < kHostInterfaceCount; ++number) {
        if (id == kHostInterfaceIds[number]) {
            *out = &HostOf(self).sides[number + 1];
        }
    }
    return *out == nullptr ? E_NOINTERFACE : S_OK;
}

/// The host is a local object of main and outlives every reference.
ULONG AddRef(void*) {
    return 1;
}
ULONG Release(void*) {
    return 1;
}

HRESULT RegisterClient(void* self, IUnknown* notifications, std::uint32_t, const Q_PropList*) {
    return notifications->QueryInterface(kNotifications0Id, reinterpret_cast<void**>(&HostOf(self).client));
}

HRESULT WatchNotification(void*, std::int32_t, std::int32_t, std::int32_t* status) {
    *status = 0;
    return S_OK;
}

HRESULT SetTextMode(void*, std::int32_t, std::int32_t* status) {
    *status = 0;
    return S_OK;
}

HRESULT ReadStringProp(void* self, std::uint32_t, std::uint32_t objectId, const Q_PropIdent* property,
                       std::int32_t* status, char** text) {
    *status = 0;
    const bool isPath = objectId == kDocumentId && property->number == kDocumentPathProperty;
    *text = isPath ? TaskText(HostOf(self).document) : nullptr;
    return S_OK;
}

/// One row: a key, the path, and 0 for a file without unsaved changes.
HRESULT ListDocumentFiles(void* self, std::uint32_t, std::int32_t, std::int32_t, Q_ValueList* files) {
    auto* fields = static_cast<Q_Value*>(CoTaskMemAlloc(3 * sizeof(Q_Value)));
    fields[0] = {kTextTag, {.text = TaskText("documentType")}};
    fields[1] = {kTextTag, {.text = TaskText(HostOf(self).document)}};
    fields[2] = {kIntegerTag, {.number = 0}};
    auto* row = static_cast<Q_ValueList*>(CoTaskMemAlloc(sizeof(Q_ValueList)));
    *row = {3, fields};
    auto* rows = static_cast<Q_Value*>(CoTaskMemAlloc(sizeof(Q_Value)));
    rows[0] = {kListTag, {.list = row}};
    *files = {1, rows};
    return S_OK;
}

/// Another client is asked to transform. This host has none: it shows the command and reports success.
HRESULT InvokeClientForValues(void*, const char* clientName, const char* command, std::int32_t* status,
                              Q_ValueList* answer) {
    std::printf("  (%s: %s)\n", clientName, command);
    *status = 0;
    *answer = {0, nullptr};
    return S_OK;
}

HRESULT SendCallReply(void*, const Q_ValueList* reply, Q_ValueList* back) {
    for (std::uint32_t i = 0; i < reply->count; ++i) {
        const Q_Value& value = reply->items[i];
        if (value.tag == kTextTag) {
            std::printf("  \"%s\"\n", value.text);
        } else {
            std::printf("  %d\n", static_cast<int>(value.number));
        }
    }
    *back = {0, nullptr};
    return S_OK;
}

// --- the host ---

using Tables = std::array<HostMethodTable, kHostInterfaceCount + 1>;

template <class Method>
void Offer(Tables& tables, typename Method::Type* function) {
    tables[Method::kInterfaceNumber].template Set<Method>(function);
}

Tables MakeTables() {
    Tables tables;
    for (HostMethodTable& table : tables) {
        table.Set<QueryInterfaceMethod>(&QueryInterface);
        table.Set<AddRefMethod>(&AddRef);
        table.Set<ReleaseMethod>(&Release);
    }
    Offer<RegisterClientMethod>(tables, &RegisterClient);
    Offer<WatchNotificationMethod>(tables, &WatchNotification);
    Offer<InvokeClientForValuesMethod>(tables, &InvokeClientForValues);
    Offer<SetTextModeMethod>(tables, &SetTextMode);
    Offer<ReadStringPropMethod>(tables, &ReadStringProp);
    Offer<ListDocumentFilesMethod>(tables, &ListDocumentFiles);
    Offer<SendCallReplyMethod>(tables, &SendCallReply);
    return tables;
}

void Send(Host& host, const std::string& request) {
    std::printf("%s\n", request.c_str());
    host.client->Notify(kRequestNotification, 0, request.c_str(), 0);
}

int Run(const std::string& module, Host& host, const std::string& folder, const std::string& log) {
    std::string problem;
    platform::LibraryHandle library = platform::OpenLibraryFile(module, problem);
    auto* const init = platform::FindFunction<ClientInitEntry>(library, kClientInitEntryName);
    if (init == nullptr) {
        std::fprintf(stderr, "minimal_host: %s cannot be used: %s\n", module.c_str(),
                     problem.empty() ? "it has no entry point" : problem.c_str());
        return 1;
    }
    if (init(library, host.sides[0].AsUnknown(), nullptr, nullptr) != 0 || host.client == nullptr) {
        std::fputs("minimal_host: the module did not connect\n", stderr);
        return 1;
    }
    host.client->Initialize(0);
    Send(host, "Validate -docId 1 -logFile \"" + log + '"');
    Send(host, "Publish -docId 1 -useDITAOT -outputFolder \"" + folder + "\" -logFile \"" + log + '"');
    host.client->Quit();
    host.client->Release();
    return 0;
}

}  // namespace

int main(int count, char** values) {
    const std::vector<std::string> arguments = platform::ProgramArguments(count, values);
    if (arguments.size() != 5) {
        std::fputs("usage: minimal_host MODULE DOCUMENT OUTPUT-FOLDER LOG\n", stderr);
        return 2;
    }
    CoInitialize(nullptr);
    const Tables tables = MakeTables();
    Host host;
    host.document = arguments[2];
    for (std::size_t number = 0; number < host.sides.size(); ++number) {
        host.sides[number] = {tables[number].Slots(), &host};
    }
    const int status = Run(arguments[1], host, arguments[3], arguments[4]);
    CoUninitialize();
    return status;
}
