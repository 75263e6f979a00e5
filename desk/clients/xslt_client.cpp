#include "desk/clients/xslt_client.h"

#include <filesystem>

#include "desk/clients/client_command.h"
#include "desk/xml/stylesheet.h"
#include "platform/drives.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

struct XsltRun {
    std::string source;  ///< Native, as the two below.
    std::string stylesheet;
    std::string output;
    std::string firstMessage;
    MessageSink messages;
};

XsltRun RunOf(const std::string& commandText) {
    const ClientCommand command = ParseClientCommand(commandText);
    XsltRun run;
    run.source = platform::ToNative(OptionOf(command, "-file"));
    run.stylesheet = platform::ToNative(OptionOf(command, "-xslfilepath"));
    run.output = platform::ToNative(OptionOf(command, "-outputfilepath"));
    return run;
}

/// Writes through the platform's own call, which changes a file as a whole.
bool WriteOutput(const std::string& path, const std::string& content) {
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
    return platform::WriteWholeFile(platform::ToSystem(path).value_or(""), content) == platform::kErrorNone;
}

/// Empty after a success; else what went wrong, which names the file.
std::string RunStylesheet(XsltRun& run) {
    if (run.source.empty() || run.stylesheet.empty() || run.output.empty()) {
        return "QlXSLT needs -file, -xslfilepath and -outputfilepath";
    }
    const auto because = [&run](const std::string& what) {
        return run.firstMessage.empty() ? what : what + ": " + run.firstMessage;
    };
    const Stylesheet stylesheet = LoadStylesheet(run.stylesheet, run.messages);
    if (stylesheet == nullptr) {
        return because("the stylesheet " + run.stylesheet + " cannot be used");
    }
    const XmlDocument document = LoadForStylesheet(run.source, run.messages);
    if (document == nullptr) {
        return because("the document " + run.source + " cannot be read");
    }
    const Transformed result = Transform({.stylesheet = stylesheet,
                                          .document = document.get(),
                                          .sourcePath = run.source,
                                          .outputPath = run.output},
                                         run.messages);
    if (!result.done) {
        return because("the stylesheet " + run.stylesheet + " failed on " + run.source);
    }
    if (result.output.empty()) {
        return because("the stylesheet " + run.stylesheet + " wrote nothing for " + run.source);
    }
    return WriteOutput(run.output, result.output) ? std::string() : run.output + " cannot be written";
}

/// The host's own stylesheet repairs a DOCTYPE on the way; that is no transformation that a person asked for.
void Record(const XsltRun& run, const std::string& reason, TransformationRecord& record) {
    if (std::filesystem::path(run.stylesheet).filename() == "Ventrix.xsl") {
        return;
    }
    ++record.started;
    if (reason.empty()) {
        return;
    }
    ++record.failed;
    if (record.reason.empty()) {
        record.reason = reason;
    }
}

ClientAnswer RunCommand(const std::string& command, const HostServices& host, TransformationRecord& record) {
    XsltRun run = RunOf(command);
    run.messages = [&run, &host](const std::string& line) {
        if (run.firstMessage.empty()) {
            run.firstMessage = line;
        }
        if (host.console) {
            host.console(line + "\n");
        }
    };
    const std::string reason = RunStylesheet(run);
    Record(run, reason, record);
    if (reason.empty()) {
        return {};
    }
    return {.status = 1, .number = 0, .values = {}};
}

}  // namespace

Client MakeXsltClient(TransformationRecord& record) {
    return [&record](const std::string& command, const HostServices& host) {
        return RunCommand(command, host, record);
    };
}

}  // namespace ventrix::desk
