#include "support/test_host.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "bridge/connection.h"
#include "platform/module.h"

namespace ventrix::test {
namespace {

char* MakeText(const std::string& text, const Allocator& allocate) {
    return static_cast<char*>(std::memcpy(allocate(text.size() + 1), text.c_str(), text.size() + 1));
}

Q_PropList MakeProps(const std::vector<HostProp>& rows, const Allocator& allocate) {
    Q_PropList list = {static_cast<std::uint32_t>(rows.size()),
                       static_cast<Q_Prop*>(allocate(rows.size() * sizeof(Q_Prop)))};
    std::transform(rows.begin(), rows.end(), list.items, [&](const HostProp& row) {
        return Q_Prop{{row.number, row.name.empty() ? nullptr : MakeText(row.name, allocate)},
                      MakeValue(row.value, allocate)};
    });
    return list;
}

}  // namespace

HostValue Text(std::string text) {
    return {kTextTag, std::move(text), 0, {}};
}

HostValue Number(std::int32_t number) {
    return {kIntegerTag, {}, number, {}};
}

HostValue Fields(std::vector<HostValue> fields) {
    return {kListTag, {}, 0, std::move(fields)};
}

HostValue Document(std::string path, std::int32_t unsaved) {
    return Fields({Text("documentType"), Text(std::move(path)), Number(unsaved)});
}

HostValue Graphic(std::string path) {
    return Fields({Text("graphicsType"), Text(std::move(path)), Number(0)});
}

Q_Value MakeValue(const HostValue& value, const Allocator& allocate) {
    Q_Value out = {};
    out.tag = value.tag;
    if (value.tag == kTextTag) {
        out.text = MakeText(value.text, allocate);
    } else if (value.tag == kListTag) {
        out.list = static_cast<Q_ValueList*>(allocate(sizeof(Q_ValueList)));
        *out.list = MakeList(value.list, allocate);
    } else {
        out.number = value.number;
    }
    return out;
}

Q_ValueList MakeList(const std::vector<HostValue>& values, const Allocator& allocate) {
    Q_ValueList list = {static_cast<std::uint32_t>(values.size()),
                        static_cast<Q_Value*>(allocate(values.size() * sizeof(Q_Value)))};
    std::transform(values.begin(), values.end(), list.items,
                   [&](const HostValue& value) { return MakeValue(value, allocate); });
    return list;
}

std::string Print(const Q_Value& value) {
    switch (value.tag) {
        case kIntegerTag:
            return std::to_string(value.number);
        case kTextTag:
            return value.text == nullptr ? "null" : '"' + std::string(value.text) + '"';
        case kListTag:
            return '[' + Print(*value.list) + ']';
        default:
            return "tag " + std::to_string(value.tag);
    }
}

std::string Print(const Q_ValueList& list) {
    std::string line;
    for (std::uint32_t i = 0; i < list.count; ++i) {
        line += (i == 0 ? "" : " ") + Print(list.items[i]);
    }
    return line;
}

Lines Print(const Q_PropList& list) {
    Lines lines;
    std::transform(list.items, list.items + list.count, std::back_inserter(lines), [](const Q_Prop& row) {
        return (row.ident.name == nullptr ? std::to_string(row.ident.number) : row.ident.name) + "=" +
               Print(row.value);
    });
    return lines;
}

struct TestHost::Methods {
    static TestHost& Host(void* self) {
        return *static_cast<TestHost*>(static_cast<HostSide*>(self)->object);
    }

    static HRESULT QueryInterface(void* self, REFIID id, void** out) {
        TestHost& host = Host(self);
        unsigned number = 0;
        if (id != IID_IUnknown) {
            const auto* found = std::find(std::begin(kHostInterfaceIds), std::end(kHostInterfaceIds), id);
            number = static_cast<unsigned>(found - std::begin(kHostInterfaceIds)) + 1;
            host.log.push_back("QueryInterface " + Line(number));
        }
        const bool missing = number > kHostInterfaceCount || host.missingInterfaces.contains(number);
        *out = missing ? nullptr : &host.sides_[number];
        host.references += missing ? 0 : 1;
        return missing ? E_NOINTERFACE : S_OK;
    }

    static ULONG AddRef(void* self) { return static_cast<ULONG>(++Host(self).references); }
    static ULONG Release(void* self) { return static_cast<ULONG>(--Host(self).references); }

    static HRESULT RegisterClient(void* self, IUnknown* notifications, std::uint32_t word,
                                  const Q_PropList* description) {
        TestHost& host = Host(self);
        host.description = Print(*description);
        if (host.keepsClient) {
            notifications->QueryInterface(kNotifications0Id, reinterpret_cast<void**>(&host.notifications_));
        }
        return host.Arrive("RegisterClient", Line(word), nullptr);
    }

    static HRESULT WatchNotification(void* self, std::int32_t number, std::int32_t state,
                                     std::int32_t* status) {
        return Host(self).Arrive("WatchNotification", Line(number, state), status);
    }

    static HRESULT InvokeClient(void* self, const char* clientName, const char* command, std::int32_t* status,
                                std::int32_t* answer) {
        TestHost& host = Host(self);
        *answer = host.integerAnswer;
        return host.Arrive("InvokeClient", std::string(clientName) + ": " + command, status);
    }

    static HRESULT WriteConsole(void* self, const char* text, std::int32_t* status) {
        return Host(self).Arrive("WriteConsole", text, status);
    }

    static HRESULT OpenDocument(void* self, const char* path, const Q_PropList* script, std::int32_t* status,
                                std::uint32_t* objectId, Q_PropList* results) {
        TestHost& host = Host(self);
        host.openScript = Print(*script);
        const HRESULT result = host.Arrive("OpenDocument", path, status);
        *objectId = host.openedId;
        if (SUCCEEDED(result)) {
            *results = MakeProps(host.openResults, host.allocate_);
        }
        return result;
    }

    static HRESULT CloseDocument(void* self, std::uint32_t objectId, std::int32_t flags,
                                 std::int32_t* status) {
        return Host(self).Arrive("CloseDocument", Line(objectId, flags), status);
    }

    static HRESULT ReadStringProp(void* self, std::uint32_t ownerId, std::uint32_t objectId,
                                  const Q_PropIdent* property, std::int32_t* status, char** text) {
        TestHost& host = Host(self);
        const HRESULT result =
            host.Arrive("ReadStringProp", Line(ownerId, objectId, property->number), status);
        std::optional<std::string> answer;
        if (property->number == kInstallationFolderProperty) {
            answer = host.installationFolder;
        } else if (property->number == kDocumentPathProperty && host.documents.contains(objectId)) {
            answer = host.documents[objectId].path;
        }
        *text = nullptr;
        if (answer && SUCCEEDED(result)) {
            *text = MakeText(*answer, host.allocate_);
        }
        return result;
    }

    static HRESULT ListDocumentFiles(void* self, std::uint32_t objectId, std::int32_t selector,
                                     std::int32_t third, Q_ValueList* files) {
        TestHost& host = Host(self);
        const HRESULT result = host.Arrive("ListDocumentFiles", Line(objectId, selector, third), nullptr);
        return host.documents.contains(objectId) ? host.HandOut(result, host.documents[objectId].files, files)
                                                 : E_FAIL;
    }

    static HRESULT SetTextMode(void* self, std::int32_t mode, std::int32_t* status) {
        return Host(self).Arrive("SetTextMode", Line(mode), status);
    }

    static HRESULT InvokeClientForValues(void* self, const char* clientName, const char* command,
                                         std::int32_t* status, Q_ValueList* answer) {
        TestHost& host = Host(self);
        const HRESULT result =
            host.Arrive("InvokeClientForValues", std::string(clientName) + ": " + command, status);
        return host.HandOut(result, host.values, answer);
    }

    static HRESULT SendCallReply(void* self, const Q_ValueList* reply, Q_ValueList* back) {
        TestHost& host = Host(self);
        return host.HandOut(host.Arrive("SendCallReply", Print(*reply), nullptr), host.values, back);
    }

    static HRESULT HostOwnsResults(void* self, std::int32_t argument) {
        TestHost& host = Host(self);
        host.Arrive("HostOwnsResults", Line(argument), nullptr);
        return host.ownershipAnswer;
    }

    static HRESULT TakeModuleHandle(void* self, void* module) {
        return Host(self).Arrive("TakeModuleHandle", module == nullptr ? "null" : "set", nullptr);
    }

    template <class Method>
    static void Add(HostMethodTable* tables, typename Method::Type* function) {
        tables[Method::kInterfaceNumber].template Set<Method>(function);
    }

    // The root object's table at 0, that of interface n at n.
    static const HostMethodTable* Tables() {
        static HostMethodTable tables[kHostInterfaceCount + 1];
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

TestHost::TestHost() {
    for (unsigned number = 0; number <= kHostInterfaceCount; ++number) {
        sides_[number] = {Methods::Tables()[number].Slots(), this};
    }
}

TestHost::~TestHost() {
    DropClient();
    if (ownershipAnswer == S_OK) {
        std::for_each(handedOut_.begin(), handedOut_.end(), CoTaskMemFree);
    }
}

void TestHost::DropClient() {
    if (notifications_ != nullptr) {
        std::exchange(notifications_, nullptr)->Release();
    }
}

std::string TestHost::Request(const std::string& text) {
    const std::string method = "SendCallReply ";
    const std::size_t before = log.size();
    notifications_->Notify(13, 0, text.c_str(), 0);
    Lines replies(log.begin() + static_cast<std::ptrdiff_t>(before), log.end());
    std::erase_if(replies, [&](const std::string& call) { return !call.starts_with(method); });
    return replies.size() == 1 ? replies[0].substr(method.size()) : Line(replies.size()) + " replies";
}

HRESULT TestHost::Arrive(const std::string& method, const std::string& arguments, std::int32_t* status) {
    log.push_back(method + " " + arguments);
    if (method.starts_with("InvokeClient")) {
        // The hook may change itself.
        if (const auto hook = onClient) {
            hook(arguments.substr(arguments.find(": ") + 2));
        }
    }
    const auto failure = failures.find(method);
    const HRESULT result = failure == failures.end() ? S_OK : failure->second;
    if (status != nullptr && SUCCEEDED(result)) {
        *status = statuses[method];
    }
    return result;
}

HRESULT TestHost::HandOut(HRESULT result, const std::vector<HostValue>& list, Q_ValueList* out) {
    if (SUCCEEDED(result)) {
        *out = MakeList(list, allocate_);
    }
    return result;
}

LinkedHost::LinkedHost() {
    Q_ApiClientInit(platform::MainModule(), Root(), nullptr, nullptr);
    log.clear();
    Notifications()->Initialize(0);
}

}  // namespace ventrix::test
