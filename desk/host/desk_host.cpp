#include "desk/host/desk_host.h"

#include <exception>
#include <fstream>
#include <map>
#include <set>
#include <utility>

#include "bridge/contract/host_interfaces.h"
#include "bridge/contract/notification_interfaces.h"
#include "bridge/contract/request.h"
#include "desk/host/host_interfaces.h"
#include "desk/host/module_library.h"
#include "desk/host/task_values.h"

namespace ventrix::desk {
namespace {

/// This host's own statuses. A client only distinguishes them from 0.
constexpr std::int32_t kUnknownClient = 1;
constexpr std::int32_t kUnknownDocument = 2;
constexpr std::int32_t kClientFailed = 3;

struct OpenDocument {
    SystemPath path;
    std::optional<DocumentFiles> files;  ///< Read when the client first asks for them.
};

/// The module is built separately from the host, so no exception may leave a host method.
template <auto Function, class... Arguments>
HRESULT WithoutException(Arguments... arguments) {
    try {
        return Function(arguments...);
    } catch (const std::exception&) {
        return E_FAIL;
    }
}

template <class Method, auto Function>
void Offer(HostMethodTables& tables) {
    tables[Method::kInterfaceNumber].template Set<Method>(&WithoutException<Function>);
}

bool CanRead(const SystemPath& path) {
    return std::ifstream(ToFilesystem(ToNative(path)), std::ios::binary).good();
}

}  // namespace

class DeskHost::Impl {
  public:
    explicit Impl(HostSettings hostSettings)
        : settings(std::move(hostSettings)), interfaces(MethodTables(), this) {}
    ~Impl() { Release(); }

    std::string Load(const NativePath& module);
    void Release();
    std::uint32_t Add(const SystemPath& path, std::optional<DocumentFiles> files);
    void FreeHandedOut();

    // The host's methods, as the contract has them.
    static HRESULT Register(void* self, IUnknown* object, std::uint32_t word, const Q_PropList* description);
    static HRESULT Watch(void* self, std::int32_t number, std::int32_t state, std::int32_t* status);
    static HRESULT InvokeClient(void* self, const char* name, const char* command, std::int32_t* status,
                                std::int32_t* answer);
    static HRESULT InvokeClientForValues(void* self, const char* name, const char* command,
                                         std::int32_t* status, Q_ValueList* answer);
    static HRESULT WriteConsole(void* self, const char* text, std::int32_t* status);
    static HRESULT Open(void* self, const char* path, const Q_PropList* openScript, std::int32_t* status,
                        std::uint32_t* id, Q_PropList* results);
    static HRESULT Close(void* self, std::uint32_t id, std::int32_t flags, std::int32_t* status);
    static HRESULT ReadStringProp(void* self, std::uint32_t owner, std::uint32_t object,
                                  const Q_PropIdent* property, std::int32_t* status, char** text);
    static HRESULT ListFiles(void* self, std::uint32_t id, std::int32_t selector, std::int32_t third,
                             Q_ValueList* files);
    static HRESULT SetTextMode(void* self, std::int32_t mode, std::int32_t* status);
    static HRESULT SendReply(void* self, const Q_ValueList* reply, Q_ValueList* back);
    static HRESULT OwnsResults(void* self, std::int32_t argument);
    static HRESULT TakeModuleHandle(void* self, void* handle);

    HostSettings settings;
    std::map<std::string, Client> clients;
    std::map<std::uint32_t, OpenDocument> documents;
    std::set<NativePath> unsaved;
    std::string registeredName;
    std::optional<std::vector<AnswerValue>> reply;
    IQuorlaneNotifications0* notifications = nullptr;
    HostInterfaces interfaces;

  private:
    static const HostMethodTables& MethodTables();
    static Impl& Of(void* self) { return *static_cast<Impl*>(HostInterfaces::HostOf(self)); }

    /// Traces a call. S_OK, or the result with which a busy host rejects it.
    HRESULT Arrive(const std::string& call) const;

    ClientAnswer CallClient(const std::string& name, const std::string& command);
    HostServices Services();
    std::vector<std::vector<AnswerValue>> FileRows(OpenDocument& document) const;

    /// Keeps a result until FreeHandedOut if the host owns its results; otherwise the client frees it.
    void HandOut(const Q_ValueList& list);
    void HandOut(char* text);

    std::vector<Q_ValueList> ownLists_;
    std::vector<char*> ownTexts_;
};

const HostMethodTables& DeskHost::Impl::MethodTables() {
    static const HostMethodTables tables = [] {
        HostMethodTables made = HostInterfaces::NewTables();
        Offer<RegisterClientMethod, &Impl::Register>(made);
        Offer<WatchNotificationMethod, &Impl::Watch>(made);
        Offer<InvokeClientMethod, &Impl::InvokeClient>(made);
        Offer<WriteConsoleMethod, &Impl::WriteConsole>(made);
        Offer<OpenDocumentMethod, &Impl::Open>(made);
        Offer<CloseDocumentMethod, &Impl::Close>(made);
        Offer<ReadStringPropMethod, &Impl::ReadStringProp>(made);
        Offer<ListDocumentFilesMethod, &Impl::ListFiles>(made);
        Offer<SetTextModeMethod, &Impl::SetTextMode>(made);
        Offer<InvokeClientForValuesMethod, &Impl::InvokeClientForValues>(made);
        Offer<SendCallReplyMethod, &Impl::SendReply>(made);
        Offer<HostOwnsResultsMethod, &Impl::OwnsResults>(made);
        Offer<TakeModuleHandleMethod, &Impl::TakeModuleHandle>(made);
        return made;
    }();
    return tables;
}

std::string DeskHost::Impl::Load(const NativePath& module) {
    const ModuleLibrary library = LoadModuleLibrary(module);
    if (library.entry == nullptr) {
        return library.problem;
    }
    if (library.entry(library.handle, interfaces.Root(), nullptr, nullptr) != 0 || notifications == nullptr) {
        Release();
        return "the module does not connect to this host: " + module.utf8;
    }
    notifications->Initialize(0);
    return {};
}

void DeskHost::Impl::Release() {
    if (notifications != nullptr) {
        notifications->Quit();
        std::exchange(notifications, nullptr)->Release();
    }
    FreeHandedOut();
}

std::uint32_t DeskHost::Impl::Add(const SystemPath& path, std::optional<DocumentFiles> files) {
    // A module outlives the host and caches the references of a document under its id, so ids must not repeat
    // within a process.
    static std::uint32_t lastId = 0;
    documents[++lastId] = {path, std::move(files)};
    return lastId;
}

void DeskHost::Impl::HandOut(const Q_ValueList& list) {
    if (settings.ownsResults) {
        ownLists_.push_back(list);
    }
}

void DeskHost::Impl::HandOut(char* text) {
    if (settings.ownsResults) {
        ownTexts_.push_back(text);
    }
}

void DeskHost::Impl::FreeHandedOut() {
    for (Q_ValueList& list : ownLists_) {
        FreeTaskList(list);
    }
    for (char* text : ownTexts_) {
        CoTaskMemFree(text);
    }
    ownLists_.clear();
    ownTexts_.clear();
}

HRESULT DeskHost::Impl::Arrive(const std::string& call) const {
    if (settings.trace) {
        settings.trace(call);
    }
    return settings.busy && settings.busy() ? RPC_E_SERVERCALL_RETRYLATER : S_OK;
}

HRESULT DeskHost::Impl::Register(void* self, IUnknown* object, std::uint32_t word,
                                 const Q_PropList* description) {
    Impl& host = Of(self);
    const std::string name = ReadTextProperty(description, kClientNameProperty);
    const HRESULT result = host.Arrive("Register " + name);
    if (result != S_OK) {
        return result;
    }
    host.registeredName = name;
    void* notifications = nullptr;
    if (SUCCEEDED(object->QueryInterface(kNotifications0Id, &notifications))) {
        host.notifications = static_cast<IQuorlaneNotifications0*>(notifications);
    }
    return S_OK;
}

HRESULT DeskHost::Impl::Watch(void* self, std::int32_t number, std::int32_t state, std::int32_t* status) {
    *status = 0;
    return Of(self).Arrive("Watch " + std::to_string(number) + " " + std::to_string(state));
}

HostServices DeskHost::Impl::Services() {
    return {[this](std::uint32_t id) {
                const auto found = documents.find(id);
                return found == documents.end() ? SystemPath{} : found->second.path;
            },
            [this](const std::string& text) {
                if (settings.console) {
                    settings.console(text);
                }
            }};
}

ClientAnswer DeskHost::Impl::CallClient(const std::string& name, const std::string& command) {
    const auto found = clients.find(name);
    if (settings.clientCalled) {
        settings.clientCalled(name);
    }
    if (found == clients.end()) {
        return {kUnknownClient, 0, {}};
    }
    try {
        return found->second(command, Services());
    } catch (const std::exception& error) {
        if (settings.console) {
            settings.console("the client " + name + " failed: " + error.what() + "\n");
        }
        return {kClientFailed, 0, {}};
    }
}

HRESULT DeskHost::Impl::InvokeClient(void* self, const char* name, const char* command, std::int32_t* status,
                                     std::int32_t* answer) {
    Impl& host = Of(self);
    *status = 0;
    *answer = 0;
    const HRESULT result = host.Arrive(std::string("InvokeClient ") + name + ": " + command);
    if (result == S_OK) {
        const ClientAnswer given = host.CallClient(name, command);
        *status = given.status;
        *answer = given.number;
    }
    return result;
}

HRESULT DeskHost::Impl::InvokeClientForValues(void* self, const char* name, const char* command,
                                              std::int32_t* status, Q_ValueList* answer) {
    Impl& host = Of(self);
    *status = 0;
    *answer = {0, nullptr};
    const HRESULT result = host.Arrive(std::string("InvokeClientForValues ") + name + ": " + command);
    if (result == S_OK) {
        const ClientAnswer given = host.CallClient(name, command);
        *status = given.status;
        *answer = TaskList(given.values);
        host.HandOut(*answer);
    }
    return result;
}

HRESULT DeskHost::Impl::WriteConsole(void* self, const char* text, std::int32_t* status) {
    Impl& host = Of(self);
    *status = 0;
    const HRESULT result = host.Arrive(std::string("WriteConsole ") + text);
    if (result == S_OK && host.settings.console) {
        host.settings.console(text);
    }
    return result;
}

HRESULT DeskHost::Impl::Open(void* self, const char* path, const Q_PropList* openScript, std::int32_t* status,
                             std::uint32_t* id, Q_PropList* results) {
    Impl& host = Of(self);
    *status = 0;
    *id = 0;
    *results = {0, nullptr};
    const HRESULT result = host.Arrive(std::string("Open ") + path);
    const SystemPath document{path};
    if (result == S_OK && CanRead(document)) {
        *id = host.Add(document, std::nullopt);
    } else if (result == S_OK) {
        *status = kUnknownDocument;
    }
    return result;
}

HRESULT DeskHost::Impl::Close(void* self, std::uint32_t id, std::int32_t flags, std::int32_t* status) {
    Impl& host = Of(self);
    *status = 0;
    const HRESULT result = host.Arrive("Close " + std::to_string(id) + " " + std::to_string(flags));
    if (result == S_OK && host.documents.erase(id) == 0) {
        *status = kUnknownDocument;
    }
    return result;
}

HRESULT DeskHost::Impl::ReadStringProp(void* self, std::uint32_t owner, std::uint32_t object,
                                       const Q_PropIdent* property, std::int32_t* status, char** text) {
    Impl& host = Of(self);
    *status = 0;
    *text = nullptr;
    const HRESULT result =
        host.Arrive("ReadStringProp " + std::to_string(object) + " " + std::to_string(property->number));
    if (result != S_OK) {
        return result;
    }
    const auto document = host.documents.find(object);
    if (object == 0 && property->number == kInstallationFolderProperty) {
        *text = TaskText(host.settings.installationFolder.utf8);
    } else if (document != host.documents.end() && property->number == kDocumentPathProperty) {
        *text = TaskText(document->second.path.utf8);
    }
    host.HandOut(*text);
    return S_OK;
}

std::vector<std::vector<AnswerValue>> DeskHost::Impl::FileRows(OpenDocument& document) const {
    if (!document.files) {
        document.files = ListDocumentFiles(ToNative(document.path));
    }
    std::vector<std::vector<AnswerValue>> rows;
    rows.reserve(document.files->files.size());
    for (const DocumentFile& file : document.files->files) {
        const std::string path =
            file.path.Empty() ? file.url : ToSystem(file.path).value_or(SystemPath{}).utf8;
        rows.push_back({file.key, path, static_cast<std::int32_t>(unsaved.contains(file.path))});
    }
    return rows;
}

HRESULT DeskHost::Impl::ListFiles(void* self, std::uint32_t id, std::int32_t selector, std::int32_t third,
                                  Q_ValueList* files) {
    Impl& host = Of(self);
    *files = {0, nullptr};
    const HRESULT result = host.Arrive("ListFiles " + std::to_string(id) + " " + std::to_string(selector) +
                                       " " + std::to_string(third));
    const auto document = host.documents.find(id);
    if (result == S_OK && document != host.documents.end()) {
        *files = TaskTable(host.FileRows(document->second));
        host.HandOut(*files);
    }
    return result;
}

HRESULT DeskHost::Impl::SetTextMode(void* self, std::int32_t mode, std::int32_t* status) {
    *status = 0;
    return Of(self).Arrive("SetTextMode " + std::to_string(mode));
}

HRESULT DeskHost::Impl::SendReply(void* self, const Q_ValueList* reply, Q_ValueList* back) {
    Impl& host = Of(self);
    *back = {0, nullptr};
    const HRESULT result = host.Arrive("SendReply");
    if (result == S_OK) {
        host.reply = ReadList(reply);
    }
    return result;
}

HRESULT DeskHost::Impl::OwnsResults(void* self, std::int32_t argument) {
    return Of(self).settings.ownsResults ? S_OK : S_FALSE;
}

HRESULT DeskHost::Impl::TakeModuleHandle(void* self, void* handle) {
    return S_OK;
}

DeskHost::DeskHost(HostSettings settings) : impl_(std::make_unique<Impl>(std::move(settings))) {}

DeskHost::~DeskHost() = default;

std::string DeskHost::LoadModule(const NativePath& module) {
    return impl_->Load(module);
}

void DeskHost::ReleaseModule() {
    impl_->Release();
}

void DeskHost::AddClient(const std::string& name, Client client) {
    impl_->clients[name] = std::move(client);
}

std::uint32_t DeskHost::AddDocument(const SystemPath& path, DocumentFiles files) {
    return impl_->Add(path, std::move(files));
}

void DeskHost::FlagUnsaved(const NativePath& path) {
    impl_->unsaved.insert(path);
}

std::optional<std::vector<AnswerValue>> DeskHost::CallModule(const std::string& request) {
    impl_->reply.reset();
    if (impl_->notifications != nullptr) {
        impl_->notifications->Notify(kRequestNotification, 0, request.c_str(), 0);
    }
    impl_->FreeHandedOut();
    return std::exchange(impl_->reply, std::nullopt);
}

IUnknown* DeskHost::Root() {
    return impl_->interfaces.Root();
}

void DeskHost::InitializeClient() {
    if (impl_->notifications != nullptr) {
        impl_->notifications->Initialize(0);
    }
}

const std::string& DeskHost::RegisteredName() const {
    return impl_->registeredName;
}

int DeskHost::HeldReferences() const {
    return impl_->interfaces.References();
}

}  // namespace ventrix::desk
