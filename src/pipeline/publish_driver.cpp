#include "pipeline/publish_driver.h"

#include "fileset/file_operations.h"
#include "markers/xslt_run.h"
#include "pipeline/coding_steps.h"
#include "pipeline/external_steps.h"
#include "pipeline/packaging.h"

namespace ventrix {

namespace {

bool IsGiven(const char* text) {
    return text != nullptr && *text != '\0';
}

void RunScriptIfGiven(const char* script, const Path& document) {
    if (IsGiven(script)) {
        RunScript(script, document);
    }
}

void CutToGroupsOfFour(std::list<std::string>& list) {
    while (list.size() % 4 != 0) {
        list.pop_back();
    }
}

/// Creates the folder of a DITA run whose request names none.
Path MakeBuildFolder(const Path& outputFolder, const Path& packagedDocument) {
    const Path folder = WithTrailingBackslash(outputFolder) + "build-" + FileNameOf(packagedDocument);
    EnsureFolder(folder);
    return WithTrailingBackslash(folder);
}

void DeleteXmlCopies(const FileList& packagedFiles) {
    for (const Path& file : packagedFiles) {
        if (IsXmlFile(file)) {
            DeleteFileAt(file);
        }
    }
}

/// Callers of the module expect the doubled backslash at both joins.
void NameDitaResult(const Path& ditaOutputFolder, PublishReply& reply) {
    reply.resultFolder = WithTrailingBackslash(ditaOutputFolder);
    reply.buildLog = reply.resultFolder + R"(\buildlog-xhtml.txt)";
    reply.resultFolder += R"(\xhtml\)";
}

void MoveTree(const Path& from, const Path& to) {
    EnsureFolder(to);
    for (const Path& file : CollectFiles(from, {""})) {
        Path target = file;
        ReplaceFirst(target, from, to);
        MoveFileInto(file, target);
    }
}

/// Moves the result into the subfolder that the document has below the output folder, so that references from
/// the pages to graphics stay valid. If that subfolder exists already, nothing is moved.
void MirrorDepth(const Path& outputFolder, const Path& documentFolder, Path& resultFolder) {
    if (documentFolder == outputFolder || !documentFolder.starts_with(outputFolder)) {
        return;
    }
    const Path oldResult = resultFolder;
    resultFolder = WithTrailingBackslash(oldResult + documentFolder.substr(outputFolder.size()));
    if (!IsFolder(resultFolder)) {
        MoveTree(oldResult, resultFolder);
    }
}

}  // namespace

void PublishDocument(std::uint32_t documentId, const char* outputFolder, const char* stylesheet,
                     const char* preScript, const char* postScript, bool useDitaOt, bool showProgressBar,
                     Path ditaval, PublishParams& params, Path logFile, PublishReply& reply) {
    const Path output = outputFolder;
    Path ditaOutputFolder = params.outFilePath;
    FileList packagedFiles;
    Path packagedDocument;
    if (PackageFiles(documentId, output, logFile, packagedFiles, packagedDocument) != kPackageBuilt) {
        return;
    }

    CutToGroupsOfFour(params.scopedAttributes);
    params.packageBase = packagedDocument;
    params.skipElements.push_back("mathml");
    EncodeFileSet(packagedFiles, params, logFile);

    RunScriptIfGiven(preScript, packagedDocument);
    if (useDitaOt) {
        if (ditaOutputFolder.empty()) {
            ditaOutputFolder = MakeBuildFolder(output, packagedDocument);
        }
        RunDitaOt(packagedDocument, ditaval, logFile, ditaOutputFolder);
    } else if (IsGiven(stylesheet)) {
        RunXsltScenario(packagedDocument, stylesheet, params.outFilePath);
    }
    RunScriptIfGiven(postScript, packagedDocument);

    DeleteXmlCopies(packagedFiles);
    ClearFolder(output, true);  // Removes only the folders that are empty now.
    DecodeOutput(output, params, logFile);

    const Path documentFolder = ParentFolder(packagedDocument);
    if (useDitaOt) {
        NameDitaResult(ditaOutputFolder, reply);
    } else {
        reply.resultFolder = WithTrailingBackslash(documentFolder);
    }
    MirrorDepth(output, documentFolder, reply.resultFolder);
    PlaceGraphics(documentId, reply.resultFolder);
}

}  // namespace ventrix
