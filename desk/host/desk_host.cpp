#include "desk/host/desk_host.h"

#include <fstream>
#include <utility>

#include "bridge/contract/notification_interfaces.h"
#include "bridge/contract/request.h"
#include "desk/host/host_interfaces.h"
#include "desk/host/module_library.h"
#include "desk/host/task_values.h"

namespace ventrix::desk {
namespace {

/// Statuses of this host's own; a client sees only that they are not 0.
constexpr std::int32_t kUnknownClient = 1;
constexpr std::int32_t kUnknownDocument = 2;

struct OpenDocument {
    SystemPath path;
    std::optional<DocumentFiles> files;  ///< Read when they are first asked for.
};

bool CanRead(const SystemPath& path) {
    return std::ifstream(ToFilesystem(ToNative(path)), std::ios::binary).good();
}

}  // namespace

class DeskHost::Impl {
  public:
    Impl(HostSettings hostSettings, HostScript hostScript)
        : settings(std::move(hostSettings)),
          script(std::move(hostScript)),
          sides(MethodTables(), this, script.missingInterfaces) {}
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
    HostScript script;
    std::map<std::string, Client> clients;
    std::map<std::uint32_t, OpenDocument> documents;
    std::set<NativePath> unsaved;
    std::vector<std::string> calls;
    std::string registeredName;
    std::optional<std::vector<AnswerValue>> reply;
    IQuorlaneNotifications0* notifications = nullptr;
    HostSides sides;

  private:
    using Tables = std::array<HostMethodTable, kHostInterfaceCount + 1>;
    static const Tables& MethodTables();
    static Impl& Of(void* self) { return *static_cast<Impl*>(HostSides::ContextOf(self)); }

    /// Notes the call. False if the script has the method fail; `result` and `status` then hold how.
    template <class Method>
    bool Enter(const std::string& line, HRESULT& result, std::int32_t* status = nullptr);

    ClientAnswer CallClient(const std::string& name, const std::string& command);
    HostServices Services();
    std::vector<std::vector<AnswerValue>> FileRows(OpenDocument& document) const;

    /// Frees a list later where the host owns its results; otherwise the client does.
    void HandOut(const Q_ValueList& list);
    void HandOut(char* text);

    std::vector<Q_ValueList> ownLists_;
    std::vector<char*> ownTexts_;
};

const DeskHost::Impl::Tables& DeskHost::Impl::MethodTables() {
    static const Tables tables = [] {
        Tables made;
        made[4].Set<RegisterClientMethod>(&Impl::Register);
        made[4].Set<WatchNotificationMethod>(&Impl::Watch);
        made[4].Set<InvokeClientMethod>(&Impl::InvokeClient);
        made[4].Set<WriteConsoleMethod>(&Impl::WriteConsole);
        made[4].Set<OpenDocumentMethod>(&Impl::Open);
        made[4].Set<CloseDocumentMethod>(&Impl::Close);
        made[4].Set<ReadStringPropMethod>(&Impl::ReadStringProp);
        made[1].Set<ListDocumentFilesMethod>(&Impl::ListFiles);
        made[9].Set<SetTextModeMethod>(&Impl::SetTextMode);
        made[12].Set<InvokeClientForValuesMethod>(&Impl::InvokeClientForValues);
        made[12].Set<SendCallReplyMethod>(&Impl::SendReply);
        made[16].Set<HostOwnsResultsMethod>(&Impl::OwnsResults);
        made[17].Set<TakeModuleHandleMethod>(&Impl::TakeModuleHandle);
        return made;
    }();
    return tables;
}

std::string DeskHost::Impl::Load(const NativePath& module) {
    const ModuleLibrary library = LoadModuleLibrary(module);
    if (library.entry == nullptr) {
        return library.problem;
    }
    if (library.entry(library.handle, sides.Root(), nullptr, nullptr) != 0 || notifications == nullptr) {
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
    // A module stays loaded when a host goes, and remembers documents by their ids.
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

template <class Method>
bool DeskHost::Impl::Enter(const std::string& line, HRESULT& result, std::int32_t* status) {
    calls.push_back(line);
    const HostScript::Method method{Method::kInterfaceNumber, Method::kIndex};
    const auto failure = script.failures.find(method);
    const HRESULT usual = script.busy && script.busy() ? RPC_E_SERVERCALL_RETRYLATER : S_OK;
    result = failure == script.failures.end() ? usual : failure->second;
    if (status != nullptr) {
        const auto scripted = script.statuses.find(method);
        *status = scripted == script.statuses.end() ? 0 : scripted->second;
    }
    return result == S_OK && (status == nullptr || *status == 0);
}

HRESULT DeskHost::Impl::Register(void* self, IUnknown* object, std::uint32_t word,
                                 const Q_PropList* description) {
    Impl& host = Of(self);
    HRESULT result;
    const std::string name = ReadTextProperty(description, kClientNameProperty);
    if (!host.Enter<RegisterClientMethod>("Register " + name, result)) {
        return result;
    }
    host.registeredName = name;
    if (host.script.dropsNotifications) {
        return S_OK;
    }
    void* side = nullptr;
    if (SUCCEEDED(object->QueryInterface(kNotifications0Id, &side))) {
        host.notifications = static_cast<IQuorlaneNotifications0*>(side);
    }
    return S_OK;
}

HRESULT DeskHost::Impl::Watch(void* self, std::int32_t number, std::int32_t state, std::int32_t* status) {
    HRESULT result;
    Of(self).Enter<WatchNotificationMethod>("Watch " + std::to_string(number) + " " + std::to_string(state),
                                            result, status);
    return result;
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
    if (script.beforeClientCall) {
        script.beforeClientCall();
    }
    if (settings.clientCalled) {
        settings.clientCalled(name);
    }
    return found == clients.end() ? ClientAnswer{kUnknownClient, 0, {}} : found->second(command, Services());
}

HRESULT DeskHost::Impl::InvokeClient(void* self, const char* name, const char* command, std::int32_t* status,
                                     std::int32_t* answer) {
    Impl& host = Of(self);
    HRESULT result;
    *answer = 0;
    if (host.Enter<InvokeClientMethod>(std::string("InvokeClient ") + name + ": " + command, result,
                                       status)) {
        const ClientAnswer given = host.CallClient(name, command);
        *status = given.status;
        *answer = given.number;
    }
    return result;
}

HRESULT DeskHost::Impl::InvokeClientForValues(void* self, const char* name, const char* command,
                                              std::int32_t* status, Q_ValueList* answer) {
    Impl& host = Of(self);
    HRESULT result;
    *answer = {0, nullptr};
    if (host.Enter<InvokeClientForValuesMethod>(std::string("InvokeClientForValues ") + name + ": " + command,
                                                result, status)) {
        const ClientAnswer given = host.CallClient(name, command);
        *status = given.status;
        *answer = TaskList(given.values);
        host.HandOut(*answer);
    }
    return result;
}

HRESULT DeskHost::Impl::WriteConsole(void* self, const char* text, std::int32_t* status) {
    Impl& host = Of(self);
    HRESULT result;
    if (host.Enter<WriteConsoleMethod>(std::string("WriteConsole ") + text, result, status) &&
        host.settings.console) {
        host.settings.console(text);
    }
    return result;
}

HRESULT DeskHost::Impl::Open(void* self, const char* path, const Q_PropList* openScript, std::int32_t* status,
                             std::uint32_t* id, Q_PropList* results) {
    Impl& host = Of(self);
    HRESULT result;
    *id = 0;
    *results = {0, nullptr};
    if (host.Enter<OpenDocumentMethod>(std::string("Open ") + path, result, status)) {
        const SystemPath document{path};
        if (CanRead(document)) {
            *id = host.Add(document, std::nullopt);
        } else {
            *status = kUnknownDocument;
        }
    }
    return result;
}

HRESULT DeskHost::Impl::Close(void* self, std::uint32_t id, std::int32_t flags, std::int32_t* status) {
    Impl& host = Of(self);
    HRESULT result;
    if (host.Enter<CloseDocumentMethod>("Close " + std::to_string(id) + " " + std::to_string(flags), result,
                                        status)) {
        *status = host.documents.erase(id) == 1 ? 0 : kUnknownDocument;
    }
    return result;
}

HRESULT DeskHost::Impl::ReadStringProp(void* self, std::uint32_t owner, std::uint32_t object,
                                       const Q_PropIdent* property, std::int32_t* status, char** text) {
    Impl& host = Of(self);
    HRESULT result;
    *text = nullptr;
    const std::string line =
        "ReadStringProp " + std::to_string(object) + " " + std::to_string(property->number);
    if (!host.Enter<ReadStringPropMethod>(line, result, status)) {
        return result;
    }
    const auto document = host.documents.find(object);
    if (object == 0 && property->number == kInstallationFolderProperty) {
        *text = TaskText(host.settings.installationFolder.utf8);
    } else if (document != host.documents.end() && property->number == kDocumentPathProperty) {
        *text = TaskText(document->second.path.utf8);
    }
    host.HandOut(*text);
    return result;
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
    HRESULT result;
    *files = {0, nullptr};
    const auto document = host.documents.find(id);
    const std::string line =
        "ListFiles " + std::to_string(id) + " " + std::to_string(selector) + " " + std::to_string(third);
    if (host.Enter<ListDocumentFilesMethod>(line, result) && document != host.documents.end()) {
        *files = TaskTable(host.FileRows(document->second));
        host.HandOut(*files);
    }
    return result;
}

HRESULT DeskHost::Impl::SetTextMode(void* self, std::int32_t mode, std::int32_t* status) {
    HRESULT result;
    Of(self).Enter<SetTextModeMethod>("SetTextMode " + std::to_string(mode), result, status);
    return result;
}

HRESULT DeskHost::Impl::SendReply(void* self, const Q_ValueList* reply, Q_ValueList* back) {
    Impl& host = Of(self);
    HRESULT result;
    *back = {0, nullptr};
    if (host.Enter<SendCallReplyMethod>("SendReply", result)) {
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

DeskHost::DeskHost(HostSettings settings, HostScript script)
    : impl_(std::make_unique<Impl>(std::move(settings), std::move(script))) {}

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
    Notify(kRequestNotification, 0, request.c_str(), 0);
    impl_->FreeHandedOut();
    return std::exchange(impl_->reply, std::nullopt);
}

void DeskHost::Notify(std::int32_t number, std::uint32_t objectId, const char* text, std::int32_t integer) {
    if (impl_->notifications != nullptr) {
        impl_->notifications->Notify(number, objectId, text, integer);
    }
}

IUnknown* DeskHost::Root() {
    return impl_->sides.Root();
}

void DeskHost::InitializeClient() {
    if (impl_->notifications != nullptr) {
        impl_->notifications->Initialize(0);
    }
}

const std::string& DeskHost::RegisteredName() const {
    return impl_->registeredName;
}

const std::vector<std::string>& DeskHost::Calls() const {
    return impl_->calls;
}

int DeskHost::HeldReferences() const {
    return impl_->sides.References();
}

}  // namespace ventrix::desk
