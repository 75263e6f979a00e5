// The desk host: plays the authoring host for one client module, on the caller's thread. It opens documents,
// lists their files, calls other clients by name and passes requests to the module. It owns the module's
// connection; documents and clients are given to it. Texts are UTF-8; paths are in system notation unless
// they are called native.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "bridge/contract/host_interfaces.h"
#include "desk/clients/client.h"
#include "desk/documents/document_files.h"
#include "platform/com.h"

namespace ventrix::desk {

/// What a test wants otherwise than a healthy host has it. A method is named by interface number and index.
struct HostScript {
    using Method = std::pair<unsigned, unsigned>;
    std::set<unsigned> missingInterfaces;     ///< Numbers, 1 to 18.
    std::map<Method, HRESULT> failures;       ///< Results that a method gives instead of working.
    std::map<Method, std::int32_t> statuses;  ///< Statuses that a method reports instead of working.
    bool dropsNotifications = false;          ///< The registration takes no reference.
    std::function<bool()> busy;               ///< While it says so, every call is to be made again later.
    std::function<void()> beforeClientCall;   ///< Runs inside each client call, before the client.
};

struct HostSettings {
    SystemPath installationFolder;  ///< Property 89.
    bool ownsResults = false;       ///< Whether the host frees what it hands out.
    std::function<void(const std::string& text)> console;
    std::function<void(const std::string& clientName)> clientCalled;  ///< For progress; may be empty.
};

class DeskHost {
  public:
    explicit DeskHost(HostSettings settings, HostScript script = {});
    ~DeskHost();
    DeskHost(const DeskHost&) = delete;
    DeskHost& operator=(const DeskHost&) = delete;

    /// Loads the module, connects and initialises it. Empty on success, else one line that says what is
    /// wrong.
    std::string LoadModule(const NativePath& module);

    /// Lets go of the module's notification object; the connection ends. The library stays loaded.
    void ReleaseModule();

    /// Makes a client known under a name.
    void AddClient(const std::string& name, Client client);

    /// Takes a document in with the files that it refers to. An id, never 0.
    std::uint32_t AddDocument(const SystemPath& path, DocumentFiles files);

    /// Flags a file as having changes that are not saved.
    void FlagUnsaved(const NativePath& path);

    /// Sends the module a request as another client would (notification 13). The values of its reply; nothing
    /// if the module sent none.
    std::optional<std::vector<AnswerValue>> CallModule(const std::string& request);

    /// Delivers any notification to the module.
    void Notify(std::int32_t number, std::uint32_t objectId, const char* text, std::int32_t integer);

    /// The root object, for a client that connects by itself. The reference stays the host's.
    IUnknown* Root();

    /// Calls Initialize of a client that connected by itself.
    void InitializeClient();

    /// What the client said of itself when it registered: its name. Empty before.
    const std::string& RegisteredName() const;

    /// The calls that reached the host, one line each, in order.
    const std::vector<std::string>& Calls() const;

    /// References to the host's interfaces that the module holds now.
    int HeldReferences() const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace ventrix::desk
