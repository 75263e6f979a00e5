// One run of the command line: the host with its clients, the document that is open in it, and the files that
// both name.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "desk/cli/options.h"
#include "desk/cli/screen.h"
#include "desk/host/desk_host.h"

namespace ventrix::desk {

struct Session {
    NativePath document;  ///< Absolute.
    std::uint32_t documentId = 0;
    DocumentFiles files;  ///< What the document refers to, itself first.
    TransformationRecord record;
    std::function<void(const std::string& client)> clientCalled;
    std::unique_ptr<DeskHost> host;
};

/// The document's files; web addresses are left out.
std::vector<NativePath> LocalFiles(const DocumentFiles& files);

/// Reads the document and starts the host. Tells what was left out. Throws Stop if the document cannot be
/// read or the host cannot start.
std::unique_ptr<Session> StartSession(const CommonOptions& options, const Screen& screen);

/// Sends a request and gives the reply's three values. Throws Stop if the module sent no reply.
struct Reply {
    std::int32_t status = 0;
    std::string first, second;
};
Reply Send(Session& session, const std::string& request);

}  // namespace ventrix::desk
