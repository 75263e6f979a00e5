// The desk host: takes the authoring host's place for one client module. It opens documents, lists their
// files, calls other clients by name and passes requests to the module. It owns the connection to the module;
// documents and clients are added by its user. Everything runs on the caller's thread. Strings are UTF-8;
// paths are in system notation unless they are called native.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/clients/client.h"
#include "desk/documents/document_files.h"
#include "platform/com.h"

namespace ventrix::desk {

/// How a host behaves. Each function may be empty.
struct HostSettings {
    SystemPath installationFolder = {};  ///< The folder of icu_data and Ventrix.xsl.
    bool ownsResults = false;            ///< Whether the host frees what it hands out.
    std::function<void(const std::string& text)> console = {};
    std::function<void(const std::string& clientName)> clientCalled = {};  ///< Before a client runs.
    std::function<void(const std::string& call)> trace =
        {};                           ///< Receives each call that arrives, as one line.
    std::function<bool()> busy = {};  ///< While it returns true, each call is rejected with "retry later".
};

class DeskHost {
  public:
    explicit DeskHost(HostSettings settings);
    ~DeskHost();
    DeskHost(const DeskHost&) = delete;
    DeskHost& operator=(const DeskHost&) = delete;

    /// Loads the module, connects and initializes it. Empty on success, else one line that describes the
    /// problem.
    std::string LoadModule(const NativePath& module);

    /// Releases the module's notification object, which ends the connection. The library stays loaded.
    void ReleaseModule();

    /// Adds a client under this name, or replaces it.
    void AddClient(const std::string& name, Client client);

    /// Adds an open document with the files that it refers to. Its id, never 0.
    std::uint32_t AddDocument(const SystemPath& path, DocumentFiles files);

    /// Marks a file as having unsaved changes.
    void FlagUnsaved(const NativePath& path);

    /// Sends the module a request as another client would. The values of its reply; nothing if it sent none.
    std::optional<std::vector<AnswerValue>> CallModule(const std::string& request);

    /// The root object, for a client that connects by itself. The reference stays the host's.
    IUnknown* Root();

    /// Calls Initialize of a client that connected by itself.
    void InitializeClient();

    /// The name that the client gave at registration; empty before.
    const std::string& RegisteredName() const;

    /// References to the host's interfaces that the client holds now.
    int HeldReferences() const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace ventrix::desk
