#include "desk/cli/session.h"

#include <algorithm>
#include <filesystem>

#include "desk/cli/exit_status.h"
#include "desk/cli/installation.h"
#include "desk/clients/dispatcher_client.h"
#include "desk/clients/dita_ot_client.h"
#include "desk/clients/xslt_client.h"
#include "platform/drives.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

void SetDrives(const std::vector<std::string>& drives) {
    if (drives.empty()) {
        return;
    }
    std::string text = platform::FormatDrives(platform::ProcessDrives());
    for (const std::string& drive : drives) {
        const std::size_t equals = drive.find('=');
        if (equals == std::string::npos || equals == 0 || equals + 1 == drive.size()) {
            throw Stop{ExitUsage, "--drive takes X=FOLDER, not " + drive};
        }
        text += ';' + drive.substr(0, equals + 1) + AbsolutePath(drive.substr(equals + 1));
    }
    platform::SetProcessDrives(platform::ParseDrives(text));
}

DocumentFiles ReadDocument(const std::string& document) {
    std::error_code error;
    if (fs::is_directory(document, error)) {
        throw Stop{ExitUnreadable, document + " is a folder; name a document in it"};
    }
    if (!fs::exists(document, error)) {
        throw Stop{ExitUnreadable, document + " does not exist"};
    }
    DocumentFiles files = ListDocumentFiles(document);
    if (!files.readable) {
        throw Stop{ExitUnreadable, document + " cannot be read: " + files.reason};
    }
    return files;
}

void AddClients(Session& session, const CommonOptions& options, const std::string& dataFolder) {
    const std::string toolkit = options.toolkit == "builtin" || options.toolkit == "installed"
                                    ? options.toolkit
                                    : AbsolutePath(options.toolkit);
    session.host->AddClient("Dita OT", MakeDitaOtClient({toolkit, dataFolder}, session.record));
    session.host->AddClient("QlXSLT", MakeXsltClient(session.record));
    session.host->AddClient("QlDispatcher", MakeDispatcherClient({AbsolutePath(options.catalog)}));
}

void FlagUnsaved(Session& session, const std::vector<std::string>& unsaved, const Screen& screen) {
    for (const std::string& file : unsaved) {
        const std::string path = SystemPath(file);
        session.host->FlagUnsaved(path);
        if (std::ranges::none_of(session.files.files,
                                 [&](const DocumentFile& listed) { return listed.path == path; })) {
            screen.Warning("--unsaved " + file + ": the document does not refer to this file");
        }
    }
}

}  // namespace

std::string AbsolutePath(const std::string& path) {
    return path.empty() ? path : fs::absolute(path).lexically_normal().string();
}

std::string SystemPath(const std::string& path) {
    const auto system = platform::ToSystem(AbsolutePath(path));
    if (!system) {
        throw Stop{ExitUsage,
                   path + ": a name with a backslash, or a place that no drive reaches, cannot be published"};
    }
    return *system;
}

std::unique_ptr<Session> StartSession(const CommonOptions& options, const Screen& screen) {
    auto session = std::make_unique<Session>();
    SetDrives(options.drives);
    session->document = AbsolutePath(options.document);
    session->files = ReadDocument(session->document);
    for (const ListingRemark& remark : session->files.remarks) {
        screen.Warning(remark.what + ": " + remark.reason);
    }
    const Installation installation = FindInstallation();
    Session* open = session.get();
    session->host = std::make_unique<DeskHost>(HostSettings{
        SystemPath(installation.folder), false, [&screen](const std::string& text) { screen.Console(text); },
        [open](const std::string& client) {
            if (open->clientCalled) {
                open->clientCalled(client);
            }
        }});
    AddClients(*session, options, installation.folder);
    if (const std::string problem = session->host->LoadModule(installation.module); !problem.empty()) {
        throw Stop{ExitNoModule, problem};
    }
    session->documentId = session->host->AddDocument(SystemPath(session->document), session->files);
    FlagUnsaved(*session, options.unsaved, screen);
    return session;
}

Reply Send(Session& session, const std::string& request) {
    const QuietStandardOutput quiet;
    const auto values = session.host->CallModule(request);
    if (!values || values->size() != 3) {
        throw Stop{ExitNoModule, "the module sent no reply"};
    }
    const auto* status = std::get_if<std::int32_t>(&(*values)[0]);
    const auto* first = std::get_if<std::string>(&(*values)[1]);
    const auto* second = std::get_if<std::string>(&(*values)[2]);
    if (status == nullptr || first == nullptr || second == nullptr) {
        throw Stop{ExitNoModule, "the module's reply has another form than this host knows"};
    }
    return {*status, *first, *second};
}

}  // namespace ventrix::desk
