#include "pipeline/dita_run.h"

#include <cstdint>
#include <string>

#include "bridge/contract/request.h"
#include "bridge/host/operations.h"
#include "bridge/host/properties.h"
#include "bridge/open_script.h"
#include "pipeline/report_log.h"

namespace ventrix {

namespace {

void SetRow(Q_PropList& script, std::int32_t number, std::int32_t value) {
    const std::int32_t index = Q_ApiFindProp(&script, number);
    // Only a script that found no memory lacks a row; the host then opens the copy under its own rules.
    if (index != kPropNotFound) {
        script.items[index].value.number = value;
    }
}

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

}  // namespace ventrix
