#include "pipeline/coding_steps.h"

#include <string>

#include "fileset/file_operations.h"
#include "markers/document_pass.h"
#include "pipeline/report_log.h"

namespace ventrix {

namespace {

void LogHeading(ReportLog& log, std::uint32_t headingId) {
    LogBlankLine(log);
    LogMessage(log, kSeverityNone, headingId);
    LogRule(log);
}

void CodeFile(ReportLog& log, const Path& file, bool decode, PublishParams& params) {
    const std::uint32_t messageId = decode ? kMessageDecodingFile : kMessageEncodingFile;
    LogMessageAndText(log, kSeverityProgress, messageId, file);
    std::string errorText;
    if (!ProcessXmlFile(file, decode, params, errorText)) {
        LogMessageAndText(log, kSeverityError, messageId, errorText);
    }
}

}  // namespace

void EncodeFileSet(const FileList& packagedFiles, PublishParams& params, Path logFile) {
    ReportLog log = OpenReportLog(logFile);
    LogHeading(log, kMessageEncodingStarts);
    for (const Path& file : packagedFiles) {
        if (IsXmlFile(file)) {
            CodeFile(log, file, false, params);
        }
    }
}

void DecodeOutput(Path outputFolder, PublishParams& params, Path logFile) {
    ReportLog log = OpenReportLog(logFile);
    LogHeading(log, kMessageDecodingStarts);
    for (const Path& file : CollectFiles(outputFolder, {".html", ".htm"})) {
        CodeFile(log, file, true, params);
    }
}

}  // namespace ventrix
