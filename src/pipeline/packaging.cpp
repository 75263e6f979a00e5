#include "pipeline/packaging.h"

#include <algorithm>

#include "bridge/contract/host_interfaces.h"
#include "bridge/host/operations.h"
#include "fileset/file_operations.h"
#include "kit/paths/file_path.h"
#include "kit/text/strings.h"
#include "pipeline/reference_scan.h"
#include "pipeline/report_log.h"

namespace ventrix {

namespace {

Path DocumentPath(std::uint32_t documentId) {
    const Q_String path(Q_ApiReadStringPropNum(0, documentId, kDocumentPathProperty));
    return path ? path.get() : "";
}

FileList GraphicsOnRoot(FileList graphics, const std::string& root) {
    graphics.remove_if([&root](const Path& graphic) { return PathRoot(graphic) != root; });
    return graphics;
}

/// Documents first, then the graphics on the same root.
FileList ChoosePackage(const ReferencePaths& paths, ReportLog& log) {
    FileList package = paths.documents;
    const std::string root = package.empty() ? "" : PathRoot(package.front());
    if (AnyOutsideRoot(paths.graphics, root)) {
        LogMessage(log, kSeverityWarning, kMessageSeveralRoots);
    }
    AppendList(package, GraphicsOnRoot(paths.graphics, root));
    return package;
}

bool ContainsPath(const FileList& list, const Path& path) {
    return std::any_of(list.begin(), list.end(),
                       [&path](const Path& element) { return Q_StrIEqual(element.c_str(), path.c_str()); });
}

/// The paths that forbid the run, since its steps would delete or rewrite the user's own files: the document,
/// if the package would have no copy of it, so that later steps would work on the source; otherwise the
/// sources in the folder that is about to be emptied.
FileList FindUnsafePaths(const FileList& package, const Path& commonFolder, const Path& document,
                         const Path& outputFolder) {
    if (commonFolder.empty() || !document.starts_with(commonFolder) || !ContainsPath(package, document)) {
        return {document};
    }
    return FilesIn(package, outputFolder);
}

void CopyPackage(const FileList& package, const Path& commonFolder, const Path& outputFolder,
                 FileList& packagedFiles) {
    for (const Path& source : package) {
        Path target = source;
        ReplaceFirst(target, commonFolder, outputFolder);
        if (CopyFileInto(source, target)) {
            packagedFiles.push_back(std::move(target));
        }
    }
}

}  // namespace

int PackageFiles(std::uint32_t documentId, Path outputFolder, Path logFile, FileList& packagedFiles,
                 Path& packagedDocument) {
    ReportLog log = OpenReportLog(logFile);
    if (!log.IsOpen()) {
        return kPackageWithoutLog;
    }
    Refresh(documentId);
    const ReferencePaths paths = CachedPaths();
    if (SpansSeveralRoots(paths.documents)) {
        LogMessage(log, kSeverityError, kMessageSeveralRoots);
        return kPackageOnSeveralRoots;
    }
    const FileList package = ChoosePackage(paths, log);
    const Path commonFolder = CommonBaseFolder(package);
    const Path document = DocumentPath(documentId);
    const FileList unsafe = FindUnsafePaths(package, commonFolder, document, outputFolder);
    if (!unsafe.empty()) {
        LogSection(log, unsafe, kSeverityError, kMessageBrokenLinks);
        return kPackageUnsafe;
    }
    ClearFolder(outputFolder, false);
    CopyPackage(package, commonFolder, outputFolder, packagedFiles);
    // Read where the contract has it, after the last copy: a host may take it as the end of packaging.
    packagedDocument = DocumentPath(documentId);
    ReplaceFirst(packagedDocument, commonFolder, outputFolder);
    return kPackageBuilt;
}

int PlaceGraphics(std::uint32_t documentId, Path folder) {
    Refresh(documentId);
    const ReferencePaths paths = CachedPaths();
    const Path base = paths.documents.empty() ? Path() : paths.documents.front();
    for (const Path& graphic : paths.graphics) {
        const Path target = ResolveInFolder(folder, RelativeTo(graphic, base));
        if (!FileReadable(target)) {
            CopyFileInto(graphic, target);
        }
    }
    return 0;
}

Path ResolveInFolder(const Path& folder, const Path& relativePath) {
    return JoinPath(folder, relativePath);
}

}  // namespace ventrix
