#include "desk/clients/dita_ot_client.h"

#include <charconv>
#include <filesystem>
#include <fstream>

#include "desk/clients/client_command.h"
#include "desk/toolkit/builtin_toolkit.h"
#include "desk/toolkit/installed_toolkit.h"
#include "desk/toolkit/package_markers.h"
#include "desk/xml/file_access.h"

namespace ventrix::desk {
namespace {

NativePath DocumentOf(const std::string& id, const HostServices& host) {
    std::uint32_t number = 0;
    std::from_chars(id.data(), id.data() + id.size(), number);
    return host.documentPath ? ToNative(host.documentPath(number)) : NativePath{};
}

/// The built-in toolkit reads in the folder of the document and in the output folder, where the package is.
std::string RunBuiltin(const DitaRun& run, const FileAccess& access, const NativePath& stylesheet) {
    ReadScope scope(access.readable);
    scope.Add({FolderOf(stylesheet), FolderOf(run.document),
               access.outputFolder.Empty() ? run.pages : access.outputFolder});
    const std::string reason = RunBuiltinToolkit(run, stylesheet);
    return scope.Refusal().empty() ? reason : scope.Refusal();
}

std::string Run(const DitaOtSettings& settings, const FileAccess& access, const DitaRun& run,
                const NativePath& logFile) {
    run.log("document " + run.document.utf8);
    for (const NativePath& filter : run.filters) {
        run.log("filter " + filter.utf8);
    }
    // The package is the module's copy of the document, which the client may change.
    if (!access.outputFolder.Empty() && IsBelowOrEqual(run.document, access.outputFolder)) {
        if (std::string problem = PreparePackage(access.outputFolder, Vocabulary::kDita, run.finding);
            !problem.empty()) {
            return problem;
        }
    }
    const NativePath stylesheet{settings.dataFolder.utf8 + "/dita-to-xhtml.xsl"};
    return settings.toolkit == "builtin" ? RunBuiltin(run, access, stylesheet)
                                         : RunInstalledToolkit(run, settings.toolkit, logFile);
}

/// The folder and all below it.
std::set<NativePath> FoldersIn(const NativePath& folder) {
    std::set<NativePath> folders{NormalPath(folder)};
    std::error_code error;
    std::filesystem::recursive_directory_iterator entry(ToFilesystem(folder), error);
    for (; !error && entry != std::filesystem::recursive_directory_iterator(); entry.increment(error)) {
        if (entry->is_directory(error)) {
            folders.insert(NormalPath(FromFilesystem(entry->path())));
        }
    }
    return folders;
}

std::vector<NativePath> Filters(const DitaOtSettings& settings, const ClientCommand& command) {
    NativePath named = PathOptionOf(command, "-filter");
    return settings.filters.empty() && !named.Empty() ? std::vector{std::move(named)} : settings.filters;
}

/// Empty after a success.
std::string RunWithLog(const DitaOtSettings& settings, const FileAccess& access, const ClientCommand& command,
                       const HostServices& host, TransformationRecord& record) {
    const NativePath document = DocumentOf(OptionOf(command, "-docId"), host);
    const NativePath output = PathOptionOf(command, "-outFilePath");
    if (document.Empty() || output.Empty()) {
        return "the command of Dita OT needs -docId with an open document, and -outFilePath";
    }
    if (const std::string type = OptionOf(command, "-transtype"); type != "xhtml") {
        return "unknown -transtype \"" + type + "\" in the command of Dita OT (expected xhtml)";
    }
    const std::string folder = NormalPath(output).utf8 + "/";
    const NativePath pages{folder + "xhtml/"};
    std::error_code error;
    std::filesystem::create_directories(ToFilesystem(pages), error);
    record.logFile = {folder + "buildlog-xhtml.txt"};
    std::filesystem::remove(ToFilesystem(record.logFile), error);
    // An installed toolkit appends its own output to the same file while it is open here.
    std::ofstream log(ToFilesystem(record.logFile), std::ios::app);
    if (!log) {
        record.logFile = {};
        return folder + " cannot be written; check its permissions and the free space";
    }
    const DitaRun run{
        .document = document,
        .filters = Filters(settings, command),
        .pages = pages,
        .log = [&log](const std::string& line) { log << line << std::endl; },
        .unread = [&record](const std::string& line) { record.unread.insert(line); },
        .finding = [&record](const DitaFinding& finding) { record.findings.push_back(finding); },
        .design = settings.design,
        .copies = settings.copies,
        .transtype = settings.transtype.empty() ? OptionOf(command, "-transtype") : settings.transtype,
        .resources = settings.resources,
        .parameters = settings.parameters};
    std::string reason = Run(settings, access, run, record.logFile);
    record.folders = FoldersIn(pages);
    run.log(reason.empty() ? "done" : "failed: " + reason);
    if (!log) {
        record.findings.push_back({record.logFile, 0, "cannot be written; check the free space"});
    }
    return reason;
}

ClientAnswer RunCommand(const DitaOtSettings& settings, const FileAccess& access, const std::string& text,
                        const HostServices& host, TransformationRecord& record) {
    ++record.started;
    const std::string reason =
        ReasonOf([&] { return RunWithLog(settings, access, ParseClientCommand(text), host, record); });
    if (reason.empty()) {
        return {};
    }
    ++record.failed;
    if (record.reason.empty()) {
        record.reason = reason;
    }
    if (host.console) {
        host.console(reason + "\n");
    }
    return {.status = 1, .number = 0, .values = {}};
}

}  // namespace

Client MakeDitaOtClient(const DitaOtSettings& settings, const FileAccess& access,
                        TransformationRecord& record) {
    return [&settings, &access, &record](const std::string& command, const HostServices& host) {
        return RunCommand(settings, access, command, host, record);
    };
}

}  // namespace ventrix::desk
