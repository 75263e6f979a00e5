#include "pipeline/validate_driver.h"

#include "pipeline/reference_scan.h"
#include "pipeline/report_log.h"

namespace ventrix {

static_assert(validateBroken == brokenFound && validateUnsaved == unsavedFound,
              "the mask of a Validate starts with the bits of its scan");

namespace {

void LogReferencesByKind(ReportLog& log) {
    FileList valid, broken, unsaved;
    for (const ReferenceEntry& entry : referenceCache.list) {
        switch (entry.kind) {
            case ReferenceKind::valid:
                valid.push_back(entry.path);
                break;
            case ReferenceKind::unsaved:
                unsaved.push_back(entry.path);
                break;
            default:
                broken.push_back(entry.path);
        }
    }
    LogSection(log, valid, severityProgress, messageValidFiles);
    LogSection(log, broken, severityWarning, messageBrokenLinks);
    LogSection(log, unsaved, severityWarning, messageUnsavedFiles);
}

/// Reports references that packaging can't bring along. Returns the bit for documents on several roots.
int LogForeignRoots(ReportLog& log) {
    const ReferencePaths paths = CachedPaths();
    int mask = 0;
    if (SpansSeveralRoots(paths.documents)) {
        LogMessage(log, severityError, messageSeveralRoots);
        mask = validateOnSeveralRoots;
    }
    // Without a document there is no root for a graphic to miss.
    if (!paths.documents.empty() && AnyOutsideRoot(paths.graphics, PathRoot(paths.documents.front()))) {
        LogMessage(log, severityWarning, messageSeveralRoots);
    }
    return mask;
}

}  // namespace

int ValidateDocument(std::uint32_t documentId, Path logFile) {
    ReportLog log = OpenReportLog(logFile);
    if (!log.IsOpen()) {
        return validateWithoutLog;
    }
    LogMessage(log, severityNone, messagePackagingTried);
    const int found = RenewReferences(documentId);
    LogReferencesByKind(log);
    return found | LogForeignRoots(log);
}

}  // namespace ventrix
