// One run of the command line: the host with its clients, the document that is open in it, and the files
// that the document refers to.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "desk/cli/options.h"
#include "desk/cli/run_report.h"
#include "desk/cli/screen.h"
#include "desk/clients/dita_ot_client.h"
#include "desk/clients/xslt_client.h"
#include "desk/host/desk_host.h"

namespace ventrix::desk {

struct Session {
    NativePath document;  ///< Absolute.
    std::uint32_t documentId = 0;
    DocumentFiles files;                      ///< The document, then the files that it refers to.
    FileAccess access;                        ///< What the transformation may read and write.
    DitaOtSettings ditaOt;                    ///< How a DITA document is transformed.
    XsltSettings xslt;                        ///< How a stylesheet runs.
    TransformationRecord record;              ///< What the clients report about the transformation.
    std::function<void()> documentPathAsked;  ///< The module reads the document's path; may be empty.
    std::function<void(const std::string& client)> clientCalled;  ///< For progress; may be empty.
    std::function<void()> transformationEnded;  ///< A client has transformed the document; may be empty.
    std::unique_ptr<DeskHost> host;
};

/// The value of --toolkit with a folder made absolute.
std::string ToolkitName(const std::string& option);

/// Reads the document and starts the host. Adds a warning to the report for each reference that was left out
/// and each file that the module passes over. Throws Stop if the document cannot be read or the host cannot
/// start.
std::unique_ptr<Session> StartSession(const CommonOptions& options, const Screen& screen, RunReport& report);

/// The three values of the module's reply.
struct Reply {
    std::int32_t status = 0;
    std::string first, second;
};

/// Sends a request and returns the reply. Throws Stop if the module sent none.
Reply Send(Session& session, const std::string& request);

}  // namespace ventrix::desk
