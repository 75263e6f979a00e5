#include "desk/cli/session.h"

#include <algorithm>
#include <filesystem>

#include "bridge/contract/host_interfaces.h"
#include "bridge/contract/request.h"
#include "desk/cli/document_checks.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/installation.h"
#include "desk/cli/path_options.h"
#include "desk/clients/dispatcher_client.h"
#include "desk/clients/dita_ot_client.h"
#include "desk/clients/xslt_client.h"
#include "platform/drives.h"
#include "platform/native_roots.h"
#include "platform/standard_streams.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

/// Returns the entry with its folder made absolute. Throws Stop if the drive or the folder is invalid.
std::string DriveEntry(const std::string& drive) {
    const std::size_t equals = drive.find('=');
    if (equals == std::string::npos) {
        throw Stop{kExitUsage, "--drive: '" + drive + "' is not of the form X=FOLDER"};
    }
    const NativePath folder = AbsolutePath({drive.substr(equals + 1)});
    std::error_code error;
    if (!fs::is_directory(ToFilesystem(folder), error)) {
        throw Stop{kExitUsage, "--drive: '" + drive + "' names a folder that does not exist"};
    }
    std::string entry = drive.substr(0, equals + 1) + folder.utf8;
    const platform::DriveTable read = platform::ParseDrives(entry);
    if (std::ranges::none_of(read, [&](const platform::Drive& one) {
            return fs::path(one.folder) == fs::path(folder.utf8) || one.folder + '/' == folder.utf8;
        })) {
        throw Stop{kExitUsage, "--drive: '" + drive + "' must begin with a drive letter or \\\\SERVER"};
    }
    return entry;
}

void SetDrives(const std::vector<std::string>& drives) {
    if (platform::SystemHasDrives()) {
        if (!drives.empty()) {
            throw Stop{kExitUsage,
                       "--drive: this system has drives of its own; map one with subst or net use"};
        }
        return;
    }
    std::string text = platform::FormatDrives(platform::ProcessDrives());
    for (const std::string& drive : drives) {
        text += ';' + DriveEntry(drive);
    }
    platform::SetProcessDrives(platform::ParseDrives(text));
}

DocumentFiles ReadDocument(const NativePath& document, const std::vector<NativePath>& allowRead) {
    const fs::path file = ToFilesystem(document);
    const std::string& name = document.utf8;
    std::error_code error;
    if (IsTooLong(document)) {
        throw Stop{kExitUnreadable, name + ": " + WhyUnnameable(document)};
    }
    if (fs::is_directory(file, error)) {
        throw Stop{kExitUnreadable, name + " is a folder; choose a document in it"};
    }
    if (!fs::exists(file, error)) {
        throw Stop{kExitUnreadable,
                   name + (error ? " cannot be accessed: " + error.message() : " does not exist")};
    }
    if (const std::string why = WhyUnnameable(document); !why.empty()) {
        throw Stop{kExitUnreadable, name + ": " + why};
    }
    DocumentFiles files = ListDocumentFiles(document, allowRead);
    if (files.refused) {
        RefuseToolkitProject(document);
        throw Stop{kExitUnreadable, name + " cannot be read: " + files.reason};
    }
    return files;
}

std::vector<NativePath> AllowedFolders(const std::vector<std::string>& options) {
    std::vector<NativePath> folders;
    for (const std::string& folder : options) {
        std::error_code error;
        if (!fs::is_directory(ToFilesystem({folder}), error)) {
            throw Stop{kExitUsage, "--allow-read: " + folder + " is not a folder"};
        }
        folders.push_back(AbsolutePath({folder}));
    }
    return folders;
}

/// Lists the files of a resource with those of the document, so that the package contains them.
void AddResources(const std::vector<std::string>& resources, const std::vector<NativePath>& allowRead,
                  DocumentFiles& files) {
    for (const std::string& resource : resources) {
        RequireFile("--resource", {resource});
        DocumentFiles read = ReadDocument(AbsolutePath({resource}), allowRead);
        files.names.elements.merge(read.names.elements);
        files.names.attributes.merge(read.names.attributes);
        for (DocumentFile& file : read.files) {
            const bool listed = std::ranges::any_of(files.files, [&](const DocumentFile& other) {
                return other.path == file.path && other.url == file.url;
            });
            if (!listed) {
                files.files.push_back(std::move(file));
            }
        }
    }
}

/// An entry that is dropped silently would show only as a file that is not on a mapped drive.
void WarnAboutDrives(RunReport& report, const Screen& screen) {
    for (const std::string& entry : platform::MalformedProcessDrives()) {
        Warn(report, screen,
             {{},
              0,
              "malformed-drive",
              "VENTRIX_DRIVES: '" + entry +
                  "' is ignored; write DRIVE=FOLDER or \\\\SERVER\\=FOLDER with an absolute folder"});
    }
}

/// The client, which reports when it has transformed the document. It also repairs a DOCTYPE, which is no
/// transformation.
Client Reporting(Client client, Session& session) {
    return [client = std::move(client), &session](const std::string& command, const HostServices& host) {
        const int before = session.record.started;
        ClientAnswer answer = client(command, host);
        if (session.record.started > before && session.transformationEnded) {
            session.transformationEnded();
        }
        return answer;
    };
}

/// The file of an entity, or its copy in the package; null if it is something else.
const DocumentFile* FindEntity(const Session& session, const NativePath& path) {
    const auto isThis = [&](const DocumentFile& file) {
        return file.entity && (file.path == path || CopyOf(session.ditaOt.copies, file.path) == path);
    };
    const auto file = std::ranges::find_if(session.files.files, isThis);
    return file == session.files.files.end() ? nullptr : &*file;
}

/// Entities and DTDs may refer to further entities; the document is the first referrer that is neither.
NativePath DeclaringDocumentOf(const Session& session, const NativePath& path) {
    const DocumentFile* file = FindEntity(session, path);
    for (std::size_t steps = session.files.files.size(); file != nullptr && steps > 0; --steps) {
        const auto referrer = std::ranges::find(session.files.files, file->referrer, &DocumentFile::path);
        if (referrer == session.files.files.end()) {
            return {};
        }
        if (!referrer->entity && !referrer->dtd) {
            return referrer->path;
        }
        file = &*referrer;
    }
    return {};
}

void AddClients(Session& session, const CommonOptions& options, const NativePath& dataFolder) {
    session.ditaOt.toolkit = ToolkitName(options.toolkit);
    session.ditaOt.dataFolder = dataFolder;
    session.host->AddClient(
        kDitaOtClient, Reporting(MakeDitaOtClient(session.ditaOt, session.access, session.record), session));
    session.host->AddClient(kXsltClient,
                            Reporting(MakeXsltClient(session.xslt, session.access, session.record), session));
    session.host->AddClient(kDispatcherClient,
                            MakeDispatcherClient({.catalog = AbsolutePath({options.catalog}),
                                                  .declaringDocument = [&session](const NativePath& file) {
                                                      return DeclaringDocumentOf(session, file);
                                                  }}));
}

void FlagUnsaved(Session& session, const std::vector<std::string>& unsaved, const Screen& screen,
                 RunReport& report) {
    for (const std::string& file : unsaved) {
        const NativePath path = AbsolutePath({file});
        RequireSystemPath(path);
        session.host->FlagUnsaved(path);
        if (std::ranges::none_of(session.files.files,
                                 [&](const DocumentFile& listed) { return listed.path == path; })) {
            Warn(report, screen,
                 {path, 0, "unsaved-not-referenced", "--unsaved: the document does not refer to this file"});
        }
    }
}

/// Reports when the module reads the path of the document.
void Watch(const Session& session, const std::string& call) {
    const std::string read =
        "ReadStringProp " + std::to_string(session.documentId) + " " + std::to_string(kDocumentPathProperty);
    if (session.documentPathAsked && call == read) {
        session.documentPathAsked();
    }
}

}  // namespace

std::string ToolkitName(const std::string& option) {
    return option == "builtin" || option == "installed" ? option : AbsolutePath({option}).utf8;
}

std::unique_ptr<Session> StartSession(const CommonOptions& options, const Screen& screen, RunReport& report) {
    auto session = std::make_unique<Session>();
    RequireFile("--catalog", {options.catalog});
    WarnAboutDrives(report, screen);
    SetDrives(options.drives);
    session->document = AbsolutePath({options.document});
    session->files = ReadDocument(session->document, AllowedFolders(options.allowRead));
    AddResources(options.resources, AllowedFolders(options.allowRead), session->files);
    session->access.readable = session->files.readable;
    for (const ListingRemark& remark : session->files.remarks) {
        Warn(report, screen,
             {remark.referrer, remark.line, "reference-left-out", remark.what + ": " + remark.reason});
    }
    for (const StrayPrefix& prefix : session->files.prefixes) {
        const std::string& name = prefix.use.prefix;
        Warn(report, screen,
             {prefix.file, prefix.use.line, "undeclared-prefix",
              "the namespace prefix \"" + name + "\" is not declared; declare it with xmlns:" + name});
    }
    ReportPassedOverFiles(session->files, report, screen);
    const Installation installation = FindInstallation();
    Session* open = session.get();
    session->host =
        std::make_unique<DeskHost>(HostSettings{RequireSystemPath(installation.folder), false,
                                                [&screen](const std::string& text) { screen.Console(text); },
                                                [open](const std::string& client) {
                                                    if (open->clientCalled) {
                                                        open->clientCalled(client);
                                                    }
                                                },
                                                [open](const std::string& call) { Watch(*open, call); }});
    AddClients(*session, options, installation.folder);
    if (const std::string problem = session->host->LoadModule(installation.module); !problem.empty()) {
        throw Stop{kExitNoModule, problem};
    }
    session->documentId = session->host->AddDocument(RequireSystemPath(session->document), session->files);
    FlagUnsaved(*session, options.unsaved, screen, report);
    return session;
}

Reply Send(Session& session, const std::string& request) {
    // The output of scripts and clients is not part of the result.
    const platform::StandardOutputRedirection redirection;
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
