#include "desk/cli/session.h"

#include <algorithm>
#include <filesystem>

#include "bridge/contract/request.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/installation.h"
#include "desk/cli/paths.h"
#include "desk/clients/dispatcher_client.h"
#include "desk/clients/dita_ot_client.h"
#include "desk/clients/xslt_client.h"
#include "desk/xml/reference_path.h"
#include "platform/drives.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

/// Returns the entry with its folder made absolute. Throws Stop if the drive or the folder is invalid.
std::string DriveEntry(const std::string& drive) {
    const std::size_t equals = drive.find('=');
    if (equals == std::string::npos) {
        throw Stop{kExitUsage, "--drive: '" + drive + "' is not of the form X=FOLDER"};
    }
    const std::string folder = AbsolutePath(drive.substr(equals + 1));
    std::error_code error;
    if (!fs::is_directory(folder, error)) {
        throw Stop{kExitUsage, "--drive: '" + drive + "' names a folder that does not exist"};
    }
    std::string entry = drive.substr(0, equals + 1) + folder;
    const platform::DriveTable read = platform::ParseDrives(entry);
    if (std::ranges::none_of(read, [&](const platform::Drive& one) {
            return fs::path(one.folder) == fs::path(folder) || one.folder + '/' == folder;
        })) {
        throw Stop{kExitUsage, "--drive: '" + drive + "' must begin with a drive letter or \\\\SERVER"};
    }
    return entry;
}

void SetDrives(const std::vector<std::string>& drives) {
    std::string text = platform::FormatDrives(platform::ProcessDrives());
    for (const std::string& drive : drives) {
        text += ';' + DriveEntry(drive);
    }
    platform::SetProcessDrives(platform::ParseDrives(text));
}

DocumentFiles ReadDocument(const std::string& document) {
    std::error_code error;
    if (fs::is_directory(document, error)) {
        throw Stop{kExitUnreadable, document + " is a folder; choose a document in it"};
    }
    if (!fs::exists(document, error)) {
        throw Stop{kExitUnreadable,
                   document + (error ? " cannot be accessed: " + error.message() : " does not exist")};
    }
    if (const std::string why = WhyUnnameable(document); !why.empty()) {
        throw Stop{kExitUnreadable, document + ": " + why};
    }
    DocumentFiles files = ListDocumentFiles(document);
    if (!files.readable) {
        throw Stop{kExitUnreadable, document + " cannot be read: " + files.reason};
    }
    return files;
}

void AddClients(Session& session, const CommonOptions& options, const std::string& dataFolder) {
    const std::string toolkit = options.toolkit == "builtin" || options.toolkit == "installed"
                                    ? options.toolkit
                                    : AbsolutePath(options.toolkit);
    session.host->AddClient(kDitaOtClient, MakeDitaOtClient({toolkit, dataFolder}, session.record));
    session.host->AddClient(kXsltClient, MakeXsltClient(session.record));
    session.host->AddClient(kDispatcherClient, MakeDispatcherClient({AbsolutePath(options.catalog)}));
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

std::vector<std::string> LocalFiles(const DocumentFiles& files) {
    std::vector<std::string> local;
    for (const DocumentFile& file : files.files) {
        if (!file.path.starts_with("http:") && !file.path.starts_with("https:")) {
            const std::string native = platform::ToNative(file.path);
            local.push_back(native.empty() ? file.path : native);
        }
    }
    return local;
}

std::unique_ptr<Session> StartSession(const CommonOptions& options, const Screen& screen) {
    auto session = std::make_unique<Session>();
    RequireFile("--catalog", options.catalog);
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
        throw Stop{kExitNoModule, problem};
    }
    session->documentId = session->host->AddDocument(SystemPath(session->document), session->files);
    FlagUnsaved(*session, options.unsaved, screen);
    return session;
}

Reply Send(Session& session, const std::string& request) {
    const StandardOutputRedirection redirection;
    const auto values = session.host->CallModule(request);
    if (!values || values->size() != 3) {
        throw Stop{kExitNoModule, "the module sent no reply"};
    }
    const auto* status = std::get_if<std::int32_t>(&(*values)[0]);
    const auto* first = std::get_if<std::string>(&(*values)[1]);
    const auto* second = std::get_if<std::string>(&(*values)[2]);
    if (status == nullptr || first == nullptr || second == nullptr) {
        throw Stop{kExitNoModule, "the module's reply has an unknown format"};
    }
    return {*status, *first, *second};
}

}  // namespace ventrix::desk
