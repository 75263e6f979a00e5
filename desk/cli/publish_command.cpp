#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "bridge/contract/request.h"
#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/installation.h"
#include "desk/cli/output_folder.h"
#include "desk/cli/path_options.h"
#include "desk/cli/published_pages.h"
#include "desk/cli/request_text.h"
#include "desk/cli/run_log.h"
#include "desk/cli/session.h"
#include "platform/files.h"
#include "platform/interruption.h"

namespace ventrix::desk {
namespace {

struct Outcome {
    Reply reply;
    RunLog log;
    NativePath output, logName, resultFolder, buildLog;
    NativePath undecoded;             ///< --out-file if the module does not decode it; else empty.
    std::vector<NativePath> missing;  ///< Referenced files that could not be packaged.
    PublishedPages pages;
    bool transforms = false;
};

void CheckInputs(const PublishOptions& publish) {
    RequireFile("--xslt", {publish.xslt});
    RequireFile("--ditaval", {publish.ditaval});
    RequireProgram("--pre-script", {publish.preScript});
    RequireProgram("--post-script", {publish.postScript});
}

bool WantsDitaRun(const PublishOptions& publish, const Session& session) {
    if (publish.ditaOt || !publish.xslt.empty() || !publish.preScript.empty() ||
        !publish.postScript.empty()) {
        return publish.ditaOt;
    }
    if (!session.files.dita) {
        throw Stop{
            kExitUsage,
            session.document.utf8 +
                " is not a DITA document; choose --xslt, --pre-script or --post-script to transform it"};
    }
    return true;
}

/// Returns everything that a run reads. None of it may be in the output folder, which packaging empties.
std::vector<NativePath> Inputs(const Options& options, const Session& session) {
    const PublishOptions& publish = options.publish;
    std::vector<NativePath> inputs{session.document};
    for (const std::string& file : {publish.xslt, publish.ditaval, publish.preScript, publish.postScript}) {
        inputs.push_back(AbsolutePath({file}));
    }
    const Installation own = FindInstallation();
    inputs.insert(inputs.end(), {own.module, own.folder});
    std::ranges::copy(LocalFiles(session.files), std::back_inserter(inputs));
    return inputs;
}

bool LiesInOutput(const NativePath& path, const Outcome& outcome) {
    return IsBelowOrEqual(RealPath(path), RealPath(outcome.output));
}

void RequireUsableFiles(const std::string& outFileOption, bool ditaOt, const std::vector<NativePath>& inputs,
                        Outcome& outcome) {
    RequireLog(outcome.logName, inputs);
    if (LiesInOutput(outcome.logName, outcome)) {
        throw Stop{kExitUsage, "--log: " + outcome.logName.utf8 +
                                   " is in the output folder, which is emptied; choose a file outside it"};
    }
    const NativePath outFile = AbsolutePath({outFileOption});
    RequireNoInput("--out-file", outFile, inputs);
    const bool named = ditaOt || outFile.utf8.ends_with(".html") || outFile.utf8.ends_with(".htm");
    if (!outFile.Empty() && !(named && LiesInOutput(outFile, outcome))) {
        outcome.undecoded = outFile;
    }
}

void RefuseOutput(const NativePath& output, const std::string& why) {
    if (!why.empty()) {
        throw Stop{kExitOutputRefused, output.utf8 + " " + why};
    }
}

SystemPath OptionalSystemPath(const std::string& path) {
    return path.empty() ? SystemPath{} : RequireSystemPath({path});
}

PublishValues Values(const Options& options, const Session& session, const NativePath& output,
                     const NativePath& log) {
    const PublishOptions& publish = options.publish;
    PublishValues values;
    values.documentId = session.documentId;
    values.outputFolder = {RequireSystemPath(output).utf8 + '\\'};
    values.xslt = OptionalSystemPath(publish.xslt);
    values.preScript = OptionalSystemPath(publish.preScript);
    values.postScript = OptionalSystemPath(publish.postScript);
    values.ditaval = OptionalSystemPath(publish.ditaval);
    values.outFile = OptionalSystemPath(publish.outFile);
    values.log = RequireSystemPath(log);
    values.ditaOt = WantsDitaRun(publish, session);
    return values;
}

std::vector<NativePath> MissingFiles(const Session& session) {
    std::vector<NativePath> missing = LocalFiles(session.files);
    std::erase_if(missing, [](const NativePath& file) { return platform::OpensForReading(file.utf8); });
    return missing;
}

std::size_t DocumentCount(const DocumentFiles& files) {
    return static_cast<std::size_t>(std::ranges::count_if(
        files.files, [](const DocumentFile& file) { return file.key != "graphicsType"; }));
}

Outcome RunPublish(const Options& options, Session& session, const Screen& screen) {
    Outcome outcome;
    CheckInputs(options.publish);
    outcome.output = NormalPath(AbsolutePath({options.publish.output}));
    session.access.outputFolder = outcome.output;
    outcome.logName = options.common.log.empty() ? NativePath{outcome.output.utf8 + ".log"}
                                                 : AbsolutePath({options.common.log});
    const PublishValues values = Values(options, session, outcome.output, outcome.logName);
    const std::string request = PublishRequest(values, options.publish);
    outcome.transforms = values.ditaOt || !values.xslt.Empty();
    const std::vector<NativePath> inputs = Inputs(options, session);
    RefuseOutput(outcome.output, OutputRefusal(outcome.output, inputs, options.publish.force));
    RequireUsableFiles(options.publish.outFile, values.ditaOt, inputs, outcome);
    RefuseOutput(outcome.output, PrepareOutput(outcome.output));

    const std::uint64_t before = LogSize(outcome.logName);
    {
        const platform::InterruptionCleanUp mark(
            [&outcome] { MarkOutput(OutputMarkName(outcome.output).utf8.c_str()); });
        Progress progress(screen, outcome.logName, DocumentCount(session.files));
        session.clientCalled = [&](const std::string& client) {
            progress.SetTransforming(client != kDispatcherClient);
        };
        outcome.reply = Send(session, request);
        session.clientCalled = nullptr;
    }
    MarkOutput(OutputMarkName(outcome.output).utf8.c_str());

    outcome.log = ReadRunLog(LogFrom(outcome.logName, before));
    outcome.resultFolder = ToNative(SystemPath{outcome.reply.first});
    outcome.buildLog = ToNative(SystemPath{outcome.reply.second});
    outcome.missing = MissingFiles(session);
    InspectPages(outcome.output, outcome.pages);
    if (!outcome.undecoded.Empty()) {
        InspectPages(values.ditaOt ? outcome.resultFolder : outcome.undecoded, outcome.pages);
    }
    return outcome;
}

nlohmann::json FailedAsJson(const RunLog& log) {
    auto list = nlohmann::json::array();
    for (const FailedFile& failed : log.failed) {
        list.push_back({{"file", failed.file}, {"reason", failed.reason}});
    }
    return list;
}

void PrintJson(const Outcome& outcome) {
    PrintObject({{"status", outcome.reply.status},
                 {"resultFolder", outcome.resultFolder},
                 {"buildLog", outcome.buildLog},
                 {"log", outcome.logName},
                 {"failed", FailedAsJson(outcome.log)},
                 {"missing", outcome.missing},
                 {"markedValues", outcome.pages.markedValues}});
}

bool IsPage(const FailedFile& failed) {
    return failed.file.utf8.ends_with(".html") || failed.file.utf8.ends_with(".htm");
}

void PrintMarkerText(const Outcome& outcome, const Screen& screen) {
    const PublishedPages& pages = outcome.pages;
    if (std::ranges::any_of(outcome.log.failed, IsPage)) {
        screen.Note(
            "marker text is decoded only in pages that are well-formed XML; to write such pages, a "
            "stylesheet needs <xsl:output method=\"xml\"/>");
    }
    if (pages.markedTexts > 0) {
        screen.Warning("pages that still contain marker text: " + std::to_string(pages.markedTexts) +
                       "; the first is " + pages.firstMarkedText.utf8);
    }
    if (pages.markedTexts > 0 && !outcome.undecoded.Empty()) {
        screen.Note("marker text is decoded only in .html and .htm files in the output folder, not in " +
                    outcome.undecoded.utf8);
    }
    if (pages.markedValues > 0) {
        screen.Note("attribute values into which the transformation copied marker text: " +
                    std::to_string(pages.markedValues) + "; the first is in " + pages.firstMarkedValue);
    }
}

void PrintFindings(const Outcome& outcome, const Screen& screen) {
    for (const NativePath& file : outcome.missing) {
        screen.Warning(file.utf8 + " is missing or unreadable and is not in the result");
    }
    if (outcome.log.graphicsOnOtherDrive) {
        screen.Warning("some graphics are on a different drive from the document and were not packaged");
    }
    for (const FailedFile& failed : outcome.log.failed) {
        screen.Warning(failed.file.utf8 + " could not be read: " + failed.reason);
    }
    PrintMarkerText(outcome, screen);
}

void PrintResult(const Outcome& outcome, const Screen& screen) {
    screen.Result("result:    " + outcome.resultFolder.utf8);
    screen.Result("pages:     " + std::to_string(outcome.pages.pages));
    if (!outcome.buildLog.Empty()) {
        screen.Result("build log: " + outcome.buildLog.utf8);
    }
    screen.Result("log:       " + outcome.logName.utf8);
}

[[noreturn]] void StopAfterPackaging(const Outcome& outcome) {
    throw Stop{kExitRefused,
               outcome.log.documentsOnSeveralDrives
                   ? "the document's files are on several drives and cannot be packaged; see the log " +
                         outcome.logName.utf8
                   : "packaging failed because the log cannot be written: " + outcome.logName.utf8};
}

int ReportStatus(const Outcome& outcome, const Session& session, const Screen& screen) {
    const TransformationRecord& record = session.record;
    if (record.failed > 0) {
        screen.Error("the transformation failed: " + record.reason +
                     (record.logFile.Empty() ? "" : "; see " + record.logFile.utf8));
        return kExitTransformation;
    }
    if (outcome.transforms && outcome.pages.pages == 0) {
        screen.Error("the transformation wrote no pages; see the log " + outcome.logName.utf8);
        return kExitTransformation;
    }
    const bool clean = outcome.log.failed.empty() && outcome.missing.empty() &&
                       !outcome.log.graphicsOnOtherDrive && session.files.remarks.empty() &&
                       outcome.pages.markedTexts == 0;
    return clean ? kExitDone : kExitFindings;
}

}  // namespace

int Publish(const Options& options, const Screen& screen) {
    const auto session = StartSession(options.common, screen);
    const Outcome outcome = RunPublish(options, *session, screen);
    if (outcome.reply.status == kRequestRefused) {
        throw Stop{kExitRefused, "the module refused the request"};
    }
    if (outcome.reply.first.empty()) {
        StopAfterPackaging(outcome);
    }
    PrintFindings(outcome, screen);
    const int status = ReportStatus(outcome, *session, screen);
    if (screen.Json()) {
        PrintJson(outcome);
    }
    PrintResult(outcome, screen);
    return status;
}

}  // namespace ventrix::desk
