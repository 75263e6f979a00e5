// A host that a test scripts: it answers for documents, plays the other clients and keeps a log of every
// call. The module under test is linked into the test program and connected through its own entry; requests
// go in as notifications, replies come back as the host receives them. One host at a time.
#pragma once

#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "bridge/contract/host_interfaces.h"
#include "bridge/contract/method_table.h"
#include "bridge/contract/notification_interfaces.h"
#include "platform/com.h"

namespace ventrix::test {

/// One value of a host's file list. A text field, a number field, or a nested list of fields, by tag.
struct HostValue {
    std::uint32_t tag = 0;
    std::string text;
    std::int32_t number = 0;
    std::vector<HostValue> list;
};

inline HostValue Text(std::string text) {
    return {Q_TextTag, std::move(text), 0, {}};
}
inline HostValue Number(std::int32_t number) {
    return {Q_IntegerTag, {}, number, {}};
}
inline HostValue Fields(std::vector<HostValue> fields) {
    return {Q_ListTag, {}, 0, std::move(fields)};
}
inline HostValue Document(std::string path, std::int32_t unsaved = 0) {
    return Fields({Text("documentType"), Text(std::move(path)), Number(unsaved)});
}
inline HostValue Graphic(std::string path) {
    return Fields({Text("graphicsType"), Text(std::move(path)), Number(0)});
}

struct HostDocument {
    std::string path;
    std::vector<HostValue> files;
};

struct HostReply {
    std::uint32_t count = 0;
    std::int32_t status = 0;
    std::string first, second;

    bool operator==(const HostReply&) const = default;
};

class ScriptedHost {
  public:
    std::map<std::uint32_t, HostDocument>
        documents;                 ///< By id; property 20 and the file list come from here.
    std::uint32_t openResult = 0;  ///< The id that the next open gives; 0: refused.
    std::function<void(const std::string& client, const std::string& command)> onClient;
    std::string opened;                               ///< The path of the last open.
    std::vector<std::string> calls;                   ///< Every host call that the module made, as one line.
    std::vector<HostReply> replies;                   ///< What the module sent back.
    std::map<std::int32_t, std::int32_t> openScript;  ///< Numbers of the integer rows of the last open.

    ScriptedHost(ClientInitEntry* entry, void* module) {
        for (unsigned number = 1; number <= HostInterfaceCount; ++number) {
            sides_[number - 1] = {Tables()[number - 1].Slots(), this};
        }
        entry(module, sides_[0].AsUnknown(), nullptr, nullptr);
        notifications_->Initialize(0);
    }
    ~ScriptedHost() { notifications_->Release(); }
    ScriptedHost(const ScriptedHost&) = delete;
    ScriptedHost& operator=(const ScriptedHost&) = delete;

    void Notify(std::int32_t number, const char* text) { notifications_->Notify(number, 0, text, 0); }
    IQuorlaneNotifications0& Client() { return *notifications_; }

    /// Hands the module one request and gives its one reply, or nothing if there was not exactly one.
    std::optional<HostReply> Request(const std::string& text) {
        const std::size_t before = replies.size();
        Notify(13, text.c_str());
        return replies.size() == before + 1 ? std::optional(replies.back()) : std::nullopt;
    }

  private:
    HostSide sides_[HostInterfaceCount];
    IQuorlaneNotifications0* notifications_ = nullptr;

    static ScriptedHost& Of(void* self) {
        return *static_cast<ScriptedHost*>(static_cast<HostSide*>(self)->object);
    }

    static char* TaskText(const std::string& text) {
        auto* copy = static_cast<char*>(CoTaskMemAlloc(text.size() + 1));
        std::memcpy(copy, text.c_str(), text.size() + 1);
        return copy;
    }

    static Q_ValueList TaskList(const std::vector<HostValue>& values) {
        Q_ValueList list = {static_cast<std::uint32_t>(values.size()),
                            static_cast<Q_Value*>(CoTaskMemAlloc(values.size() * sizeof(Q_Value)))};
        for (std::size_t i = 0; i < values.size(); ++i) {
            list.items[i] = TaskValue(values[i]);
        }
        return list;
    }

    static Q_Value TaskValue(const HostValue& value) {
        Q_Value out = {};
        out.tag = value.tag;
        if (value.tag == Q_TextTag) {
            out.text = TaskText(value.text);
        } else if (value.tag == Q_ListTag) {
            out.list = static_cast<Q_ValueList*>(CoTaskMemAlloc(sizeof(Q_ValueList)));
            *out.list = TaskList(value.list);
        } else {
            out.number = value.number;
        }
        return out;
    }

    static HRESULT QueryInterface(void* self, REFIID id, void** out) {
        *out = nullptr;
        for (unsigned i = 0; i < HostInterfaceCount; ++i) {
            // Number 16 would make the host the owner of its results; this one leaves them to the module.
            if (id == HostInterfaceIds[i] && i + 1 != HostOwnsResultsMethod::interfaceNumber) {
                *out = &Of(self).sides_[i];
                return S_OK;
            }
        }
        return E_NOINTERFACE;
    }
    static ULONG CountNothing(void*) { return 1; }

    static HRESULT RegisterClient(void* self, IUnknown* object, std::uint32_t, const Q_PropList*) {
        void* notifications = nullptr;
        object->QueryInterface(Notifications0Id, &notifications);
        Of(self).notifications_ = static_cast<IQuorlaneNotifications0*>(notifications);
        return S_OK;
    }
    static HRESULT Watch(void* self, std::int32_t number, std::int32_t state, std::int32_t* status) {
        Of(self).calls.push_back("watch " + std::to_string(number) + " " + std::to_string(state));
        *status = 0;
        return S_OK;
    }
    static HRESULT SetTextMode(void* self, std::int32_t mode, std::int32_t* status) {
        Of(self).calls.push_back("text mode " + std::to_string(mode));
        *status = 0;
        return S_OK;
    }
    static HRESULT WriteConsole(void*, const char*, std::int32_t* status) {
        *status = 0;
        return S_OK;
    }
    static HRESULT InvokeClient(void* self, const char* client, const char* command, std::int32_t* status,
                                std::int32_t* answer) {
        ScriptedHost& host = Of(self);
        host.calls.push_back(std::string(client) + ": " + command);
        if (host.onClient) {
            host.onClient(client, command);
        }
        *status = *answer = 0;
        return S_OK;
    }
    static HRESULT InvokeClientForValues(void* self, const char* client, const char* command,
                                         std::int32_t* status, Q_ValueList* answer) {
        Of(self).calls.push_back(std::string(client) + ": " + command);
        *status = 0;
        *answer = {};
        return S_OK;
    }
    static HRESULT SendCallReply(void* self, const Q_ValueList* reply, Q_ValueList* back) {
        HostReply out;
        out.count = reply->count;
        if (reply->count == 3 && reply->items[0].tag == Q_IntegerTag && reply->items[1].tag == Q_TextTag &&
            reply->items[2].tag == Q_TextTag && reply->items[1].text != nullptr &&
            reply->items[2].text != nullptr) {
            out.status = reply->items[0].number;
            out.first = reply->items[1].text;
            out.second = reply->items[2].text;
        } else {
            out.first = "(not a number and two texts)";
        }
        Of(self).replies.push_back(out);
        *back = {};
        return S_OK;
    }
    static HRESULT OpenDocument(void* self, const char* path, const Q_PropList* script, std::int32_t* status,
                                std::uint32_t* objectId, Q_PropList* results) {
        ScriptedHost& host = Of(self);
        host.calls.push_back(std::string("open ") + path);
        host.opened = path;
        host.openScript.clear();
        for (std::uint32_t i = 0; i < script->count; ++i) {
            if (script->items[i].value.tag == Q_IntegerTag) {
                host.openScript[script->items[i].ident.number] = script->items[i].value.number;
            }
        }
        *status = 0;
        *objectId = host.openResult;
        *results = {1, static_cast<Q_Prop*>(CoTaskMemAlloc(sizeof(Q_Prop)))};
        results->items[0] = {{7, nullptr}, TaskValue(Text("opened"))};
        return S_OK;
    }
    static HRESULT CloseDocument(void* self, std::uint32_t objectId, std::int32_t flags,
                                 std::int32_t* status) {
        Of(self).calls.push_back("close " + std::to_string(objectId) + " " + std::to_string(flags));
        *status = 0;
        return S_OK;
    }
    static HRESULT ListFiles(void* self, std::uint32_t objectId, std::int32_t selector, std::int32_t third,
                             Q_ValueList* files) {
        ScriptedHost& host = Of(self);
        host.calls.push_back("list " + std::to_string(objectId) + " " + std::to_string(selector) + " " +
                             std::to_string(third));
        const auto document = host.documents.find(objectId);
        if (document == host.documents.end()) {
            return E_FAIL;
        }
        *files = TaskList(document->second.files);
        return S_OK;
    }
    static HRESULT ReadStringProp(void* self, std::uint32_t owner, std::uint32_t objectId,
                                  const Q_PropIdent* property, std::int32_t* status, char** text) {
        ScriptedHost& host = Of(self);
        const auto document = host.documents.find(objectId);
        const bool isPath = owner == 0 && property->number == 20 && document != host.documents.end();
        *text = isPath ? TaskText(document->second.path) : nullptr;
        *status = 0;
        return S_OK;
    }

    template <class Method>
    static void Set(HostMethodTable* tables, typename Method::Type* function) {
        HostMethodTable& table = tables[Method::interfaceNumber - 1];
        table.template Set<Method>(function);
    }

    static HostMethodTable* Tables() {
        static HostMethodTable tables[HostInterfaceCount];
        static const bool filled = [] {
            for (HostMethodTable& table : tables) {
                table.Set<QueryInterfaceMethod>(&QueryInterface);
                table.Set<AddRefMethod>(&CountNothing);
                table.Set<ReleaseMethod>(&CountNothing);
            }
            Set<RegisterClientMethod>(tables, &RegisterClient);
            Set<WatchNotificationMethod>(tables, &Watch);
            Set<SetTextModeMethod>(tables, &SetTextMode);
            Set<WriteConsoleMethod>(tables, &WriteConsole);
            Set<InvokeClientMethod>(tables, &InvokeClient);
            Set<InvokeClientForValuesMethod>(tables, &InvokeClientForValues);
            Set<SendCallReplyMethod>(tables, &SendCallReply);
            Set<OpenDocumentMethod>(tables, &OpenDocument);
            Set<CloseDocumentMethod>(tables, &CloseDocument);
            Set<ListDocumentFilesMethod>(tables, &ListFiles);
            Set<ReadStringPropMethod>(tables, &ReadStringProp);
            return true;
        }();
        (void)filled;
        return tables;
    }
};

}  // namespace ventrix::test
