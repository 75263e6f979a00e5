#include "desk/clients/dita_ot_client.h"

#include <charconv>
#include <filesystem>
#include <fstream>

#include "desk/clients/client_command.h"
#include "desk/toolkit/builtin_toolkit.h"
#include "desk/toolkit/installed_toolkit.h"
#include "desk/xml/reference_path.h"
#include "platform/drives.h"

namespace ventrix::desk {
namespace {

std::string DocumentOf(const std::string& id, const HostServices& host) {
    std::uint32_t number = 0;
    std::from_chars(id.data(), id.data() + id.size(), number);
    return host.documentPath ? platform::ToNative(host.documentPath(number)) : std::string();
}

std::string Run(const DitaOtSettings& settings, const DitaRun& run, const std::string& logFile) {
    run.log("document " + run.document);
    if (!run.ditaval.empty()) {
        run.log("filter " + run.ditaval);
    }
    return settings.toolkit == "builtin" ? RunBuiltinToolkit(run, settings.dataFolder + "/dita-to-xhtml.xsl")
                                         : RunInstalledToolkit(run, settings.toolkit, logFile);
}

/// Empty after a success.
std::string RunWithLog(const DitaOtSettings& settings, const ClientCommand& command, const HostServices& host,
                       TransformationRecord& record) {
    const std::string document = DocumentOf(OptionOf(command, "-docId"), host);
    const std::string output = platform::ToNative(OptionOf(command, "-outFilePath"));
    if (document.empty() || output.empty()) {
        return "Dita OT needs an open document and -outFilePath";
    }
    if (const std::string type = OptionOf(command, "-transtype"); type != "xhtml") {
        return "Dita OT makes xhtml only, not \"" + type + "\"";
    }
    const std::string folder = NormalPath(output) + "/";
    std::error_code error;
    std::filesystem::create_directories(folder + "xhtml", error);
    record.logFile = folder + "buildlog-xhtml.txt";
    std::filesystem::remove(record.logFile, error);
    // A toolkit appends to the same file.
    std::ofstream log(record.logFile, std::ios::app);
    if (!log) {
        record.logFile.clear();
        return folder + " cannot be written";
    }
    const DitaRun run{.document = document,
                      .ditaval = platform::ToNative(OptionOf(command, "-filter")),
                      .pages = folder + "xhtml/",
                      .log = [&log](const std::string& line) { log << line << std::endl; }};
    std::string reason = Run(settings, run, record.logFile);
    run.log(reason.empty() ? "done" : "failed: " + reason);
    return reason;
}

ClientAnswer RunCommand(const DitaOtSettings& settings, const std::string& text, const HostServices& host,
                        TransformationRecord& record) {
    ++record.started;
    const std::string reason = RunWithLog(settings, ParseClientCommand(text), host, record);
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

Client MakeDitaOtClient(DitaOtSettings settings, TransformationRecord& record) {
    return [settings = std::move(settings), &record](const std::string& command, const HostServices& host) {
        return RunCommand(settings, command, host, record);
    };
}

}  // namespace ventrix::desk
