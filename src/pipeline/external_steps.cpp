#include "pipeline/external_steps.h"

#include <cstdint>
#include <cstdio>
#include <string>

#include "bridge/contract/request.h"
#include "bridge/host/operations.h"
#include "bridge/host/properties.h"
#include "bridge/open_script.h"
#include "pipeline/report_log.h"
#include "platform/process.h"

namespace ventrix {

namespace {

void SetRow(Q_PropList& script, std::int32_t number, std::int32_t value) {
    const std::int32_t index = Q_ApiFindProp(&script, number);
    // Only a script for which there was no memory lacks a row. The host then opens the copy by its own rules.
    if (index != kPropNotFound) {
        script.items[index].value.number = value;
    }
}

/// The host's default script, with the values of the eight rows that the toolkit's client needs.
Q_PropList OpenScript() {
    Q_PropList script = Q_ApiDefaultOpenScript();
    SetRow(script, 5, 0);
    for (const std::int32_t number : {20, 22, 23, 24, 25, 28, 40}) {
        SetRow(script, number, 1);
    }
    return script;
}

std::uint32_t OpenCopy(const Path& documentPath) {
    Q_PropList script = OpenScript();
    Q_PropList* results = nullptr;
    const std::uint32_t documentId = Q_ApiOpenDocument(documentPath.c_str(), &script, &results);
    Q_ApiFreePropList(&script);
    Q_ApiFreePropList(results);
    return documentId;
}

void LogRun(ReportLog& log, const Path& documentPath, const Path& ditaval) {
    LogBlankLine(log);
    LogMessage(log, kSeverityProgress, kMessageDitaStarts);
    LogRule(log);
    LogMessageAndText(log, kSeverityNone, kMessageInputFile, documentPath);
    LogMessageAndText(log, kSeverityNone, kMessageDitavalFile, ditaval);
}

std::string PathOption(const char* name, const Path& path) {
    return path.empty() ? std::string() : std::string(" ") + name + " \"" + path + "\"";
}

std::string CommandLine(std::uint32_t documentId, const Path& ditaval, const Path& outputPath) {
    return "Save -docId " + std::to_string(documentId) + " -transtype xhtml" +
           PathOption("-filter", ditaval) + PathOption("-outFilePath", outputPath);
}

}  // namespace

void RunDitaOt(Path documentPath, Path ditaval, Path logFile, Path outputPath) {
    const std::uint32_t documentId = OpenCopy(documentPath);
    if (documentId == 0) {
        return;
    }
    ReportLog log = OpenReportLog(logFile);
    LogRun(log, documentPath, ditaval);
    Q_ApiInvokeClient(kDitaOtClient, CommandLine(documentId, ditaval, outputPath).c_str());
    Q_ApiCloseDocument(documentId, 1);
}

void RunScript(Path script, const Path& documentPath) {
    platform::ProcessHandle process;
    const auto error = platform::StartProcess("\"" + script + "\" \"" + documentPath + "\"", process);
    if (error != platform::kErrorNone) {
        std::printf("CreateProcess failed (%d)\n", static_cast<int>(error));
        // Otherwise the line could come after the output of programs that are started later.
        std::fflush(stdout);
    }
    platform::WaitForProcess(process);
}

}  // namespace ventrix
