#include "pipeline/validate_driver.h"

#include "pipeline/reference_scan.h"
#include "pipeline/report_log.h"

namespace ventrix {

namespace {

void LogReferencesByKind(ReportLog& log) {
    FileList valid, broken, unsaved;
    for (const ReferenceEntry& entry : referenceCache.list) {
        switch (entry.kind) {
            case ReferenceKind::kValid:
                valid.push_back(entry.path);
                break;
            case ReferenceKind::kUnsaved:
                unsaved.push_back(entry.path);
                break;
            default:
                broken.push_back(entry.path);
        }
    }
    LogSection(log, valid, kSeverityProgress, kMessageValidFiles);
    LogSection(log, broken, kSeverityWarning, kMessageBrokenLinks);
    LogSection(log, unsaved, kSeverityWarning, kMessageUnsavedFiles);
}

/// Reports references that packaging refuses or leaves out. Returns the bit for documents on several roots.
std::int32_t LogForeignRoots(ReportLog& log) {
    const ReferencePaths paths = CachedPaths();
    std::int32_t mask = 0;
    if (SpansSeveralRoots(paths.documents)) {
        LogMessage(log, kSeverityError, kMessageSeveralRoots);
        mask = kValidateOnSeveralRoots;
    }
    // Without documents there is no root to compare the graphics with.
    if (!paths.documents.empty() && AnyOutsideRoot(paths.graphics, PathRoot(paths.documents.front()))) {
        LogMessage(log, kSeverityWarning, kMessageSeveralRoots);
    }
    return mask;
}

}  // namespace

std::int32_t ValidateDocument(std::uint32_t documentId, Path logFile) {
    ReportLog log = OpenReportLog(logFile);
    if (!log.IsOpen()) {
        return kValidateWithoutLog;
    }
    LogMessage(log, kSeverityNone, kMessagePackagingTried);
    const std::int32_t found = RenewReferences(documentId);
    LogReferencesByKind(log);
    return found | LogForeignRoots(log);
}

}  // namespace ventrix
