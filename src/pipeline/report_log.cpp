#include "pipeline/report_log.h"

#include "kit/resource_strings.h"

namespace ventrix {

namespace {

void WriteString(ReportLog& log, std::uint32_t id) {
    char text[1024] = {};
    Q_LoadResourceString(id, text, sizeof text - 1);
    log.Write(text);
}

void WriteSeverityWord(ReportLog& log, int severity) {
    switch (severity) {
        case kSeverityProgress:
            return WriteString(log, kProgressWord);
        case kSeverityWarning:
            return WriteString(log, kWarningWord);
        case kSeverityError:
            return WriteString(log, kErrorWord);
        default:
            return;
    }
}

}  // namespace

ReportLog OpenReportLog(const Path& path) {
    return ReportLog(path);
}

void LogBlankLine(ReportLog& log) {
    log.EndLine();
}

void LogRule(ReportLog& log) {
    LogMessage(log, kSeverityNone, kMessageRule);
}

void LogMessage(ReportLog& log, int severity, std::uint32_t messageId) {
    LogMessageAndText(log, severity, messageId, {});
}

void LogMessageAndText(ReportLog& log, int severity, std::uint32_t messageId, std::string_view text) {
    WriteSeverityWord(log, severity);
    WriteString(log, messageId);
    log.Write(text);
    log.EndLine();
}

void LogSection(ReportLog& log, const FileList& list, int severity, std::uint32_t titleId) {
    if (list.empty()) {
        return;
    }
    LogBlankLine(log);
    LogMessage(log, severity, titleId);
    LogRule(log);
    for (const Path& path : list) {
        log.Write(path);
        log.EndLine();
    }
    LogRule(log);
}

}  // namespace ventrix
