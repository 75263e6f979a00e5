#include "bridge/fake_host.h"

#include <algorithm>
#include <iterator>

#include "bridge/properties.h"
#include "bridge/values.h"

namespace ventrix::test {
namespace {

std::vector<void*> handedOut;

void* HandOutBlock(std::size_t size) {
    return handedOut.emplace_back(CoTaskMemAlloc(size));
}

std::string ValueText(const Q_Value& value) {
    return value.tag == Q_TextTag ? value.text : std::to_string(value.number);
}

std::string Quoted(const char* text) {
    return '"' + std::string(text) + '"';
}

template <class... Numbers>
std::string Line(Numbers... numbers) {
    std::string line;
    ((line += (line.empty() ? "" : " ") + std::to_string(numbers)), ...);
    return line;
}

}  // namespace

struct FakeHost::Methods {
    static FakeHost& Host(void* self) {
        return *static_cast<FakeHost*>(static_cast<HostSide*>(self)->object);
    }

    static HRESULT QueryInterface(void* self, REFIID id, void** out) {
        FakeHost& host = Host(self);
        const auto* found = std::find(std::begin(HostInterfaceIds), std::end(HostInterfaceIds), id);
        const auto number = static_cast<unsigned>(found - std::begin(HostInterfaceIds)) + 1;
        host.log.push_back("QueryInterface " + Line(number));
        if (number > HostInterfaceCount || host.missingInterfaces.contains(number)) {
            return E_NOINTERFACE;
        }
        ++host.references;
        *out = &host.sides_[number];
        return S_OK;
    }

    static ULONG AddRef(void* self) { return static_cast<ULONG>(++Host(self).references); }
    static ULONG Release(void* self) { return static_cast<ULONG>(--Host(self).references); }

    static HRESULT RegisterClient(void* self, IUnknown* notifications, std::uint32_t word,
                                  const Q_PropList* description) {
        FakeHost& host = Host(self);
        for (std::uint32_t i = 0; i < description->count; ++i) {
            const Q_Prop& row = description->items[i];
            host.description.emplace_back(row.ident.number, ValueText(row.value));
        }
        if (host.keepsClient) {
            notifications->QueryInterface(Notifications0Id, reinterpret_cast<void**>(&host.notifications_));
        }
        return host.Arrive("RegisterClient", Line(word), nullptr);
    }

    static HRESULT WatchNotification(void* self, std::int32_t number, std::int32_t state,
                                     std::int32_t* status) {
        return Host(self).Arrive("WatchNotification", Line(number, state), status);
    }

    static HRESULT InvokeClient(void* self, const char* clientName, const char* command, std::int32_t* status,
                                std::int32_t* answer) {
        FakeHost& host = Host(self);
        *answer = host.integerAnswer;
        const HRESULT result =
            host.Arrive("InvokeClient", Quoted(clientName) + " " + Quoted(command), status);
        return host.whileClientIsCalled ? host.whileClientIsCalled() : result;
    }

    static HRESULT WriteConsole(void* self, const char* text, std::int32_t* status) {
        return Host(self).Arrive("WriteConsole", Quoted(text), status);
    }

    static HRESULT OpenDocument(void* self, const char* path, const Q_PropList* script, std::int32_t* status,
                                std::uint32_t* objectId, Q_PropList* results) {
        FakeHost& host = Host(self);
        const HRESULT result = host.Arrive("OpenDocument", Quoted(path) + " " + Line(script->count), status);
        *objectId = host.openedId;
        if (SUCCEEDED(result)) {
            Q_CopyPropListWith(results, &host.openResults, HandOutBlock);
        }
        return result;
    }

    static HRESULT CloseDocument(void* self, std::uint32_t objectId, std::int32_t flags,
                                 std::int32_t* status) {
        return Host(self).Arrive("CloseDocument", Line(objectId, flags), status);
    }

    static HRESULT ReadStringProp(void* self, std::uint32_t ownerId, std::uint32_t objectId,
                                  const Q_PropIdent* property, std::int32_t* status, char** text) {
        FakeHost& host = Host(self);
        const HRESULT result =
            host.Arrive("ReadStringProp", Line(ownerId, objectId, property->number), status);
        if (host.text && SUCCEEDED(result)) {
            const char* source = host.text->c_str();
            Q_CopyTextWith(text, &source, HandOutBlock);
        }
        return result;
    }

    static HRESULT ListDocumentFiles(void* self, std::uint32_t objectId, std::int32_t selector,
                                     std::int32_t third, Q_ValueList* files) {
        FakeHost& host = Host(self);
        const HRESULT result = host.Arrive("ListDocumentFiles", Line(objectId, selector, third), nullptr);
        host.HandOutValues(result, files);
        return result;
    }

    static HRESULT SetTextMode(void* self, std::int32_t mode, std::int32_t* status) {
        return Host(self).Arrive("SetTextMode", Line(mode), status);
    }

    static HRESULT InvokeClientForValues(void* self, const char* clientName, const char* command,
                                         std::int32_t* status, Q_ValueList* answer) {
        FakeHost& host = Host(self);
        const HRESULT result =
            host.Arrive("InvokeClientForValues", Quoted(clientName) + " " + Quoted(command), status);
        host.HandOutValues(result, answer);
        return result;
    }

    static HRESULT SendCallReply(void* self, const Q_ValueList* reply, Q_ValueList* back) {
        FakeHost& host = Host(self);
        host.reply.clear();
        std::transform(reply->items, reply->items + reply->count, std::back_inserter(host.reply), ValueText);
        const HRESULT result = host.Arrive("SendCallReply", Line(reply->count), nullptr);
        host.HandOutValues(result, back);
        return result;
    }

    static HRESULT HostOwnsResults(void* self, std::int32_t argument) {
        FakeHost& host = Host(self);
        host.Arrive("HostOwnsResults", Line(argument), nullptr);
        return host.ownershipAnswer;
    }

    static HRESULT TakeModuleHandle(void* self, void* module) {
        return Host(self).Arrive("TakeModuleHandle", module == nullptr ? "null" : "set", nullptr);
    }

    template <class Method>
    static void Add(HostMethodTable* tables, typename Method::Type* function) {
        tables[Method::interfaceNumber].template Set<Method>(function);
    }

    // One table for each interface, and at 0 the root object's.
    static const HostMethodTable* Tables() {
        static HostMethodTable tables[HostInterfaceCount + 1];
        for (HostMethodTable& table : tables) {
            table.Set<QueryInterfaceMethod>(QueryInterface);
            table.Set<AddRefMethod>(AddRef);
            table.Set<ReleaseMethod>(Release);
        }
        Add<RegisterClientMethod>(tables, RegisterClient);
        Add<WatchNotificationMethod>(tables, WatchNotification);
        Add<InvokeClientMethod>(tables, InvokeClient);
        Add<WriteConsoleMethod>(tables, WriteConsole);
        Add<OpenDocumentMethod>(tables, OpenDocument);
        Add<CloseDocumentMethod>(tables, CloseDocument);
        Add<ReadStringPropMethod>(tables, ReadStringProp);
        Add<ListDocumentFilesMethod>(tables, ListDocumentFiles);
        Add<SetTextModeMethod>(tables, SetTextMode);
        Add<InvokeClientForValuesMethod>(tables, InvokeClientForValues);
        Add<SendCallReplyMethod>(tables, SendCallReply);
        Add<HostOwnsResultsMethod>(tables, HostOwnsResults);
        Add<TakeModuleHandleMethod>(tables, TakeModuleHandle);
        return tables;
    }
};

FakeHost::FakeHost() {
    for (unsigned number = 0; number <= HostInterfaceCount; ++number) {
        sides_[number] = {Methods::Tables()[number].Slots(), this};
    }
}

FakeHost::~FakeHost() {
    DropClient();
    if (ownershipAnswer == S_OK) {
        std::for_each(handedOut.begin(), handedOut.end(), CoTaskMemFree);
    }
    handedOut.clear();
    Q_ApiFreeValueList(&values);
    Q_ApiFreePropList(&openResults);
}

void FakeHost::DropClient() {
    if (notifications_ != nullptr) {
        std::exchange(notifications_, nullptr)->Release();
    }
}

HRESULT FakeHost::Arrive(const std::string& method, const std::string& arguments, std::int32_t* status) {
    log.push_back(method + " " + arguments);
    const auto failure = failures.find(method);
    if (status != nullptr && failure == failures.end()) {
        *status = statuses[method];
    }
    return failure == failures.end() ? S_OK : failure->second;
}

void FakeHost::HandOutValues(HRESULT result, Q_ValueList* out) {
    if (SUCCEEDED(result)) {
        Q_CopyValueListWith(out, &values, HandOutBlock);
    }
}

}  // namespace ventrix::test
