#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/installation.h"
#include "desk/cli/json_output.h"
#include "desk/cli/output_folder.h"
#include "desk/cli/paths.h"
#include "desk/cli/published_pages.h"
#include "desk/cli/request_text.h"
#include "desk/cli/run_log.h"
#include "desk/cli/session.h"
#include "platform/drives.h"
#include "platform/files.h"
#include "platform/interruption.h"

namespace ventrix::desk {
namespace {

constexpr std::int32_t kRefused = -43;

struct Outcome {
    Reply reply;
    RunLog log;
    std::string output, logName, resultFolder, buildLog;  ///< Native.
    std::string undecoded;             ///< --out-file where the module does not look for pages; else empty.
    std::vector<std::string> missing;  ///< Referenced files that could not be packaged.
    PublishedPages pages;
    bool transforms = false;
};

void CheckInputs(const PublishOptions& publish) {
    RequireFile("--xslt", publish.xslt);
    RequireFile("--ditaval", publish.ditaval);
    RequireProgram("--pre-script", publish.preScript);
    RequireProgram("--post-script", publish.postScript);
}

bool WantsDitaRun(const PublishOptions& publish, const Session& session) {
    if (publish.ditaOt || !publish.xslt.empty() || !publish.preScript.empty() ||
        !publish.postScript.empty()) {
        return publish.ditaOt;
    }
    if (!session.files.dita) {
        throw Stop{
            kExitUsage,
            session.document + " is no DITA document: say how to transform it, with --xslt FILE or a script"};
    }
    return true;
}

/// Everything that a run reads and that must not lie in the folder which packaging empties.
std::vector<std::string> Inputs(const Options& options, const Session& session) {
    const PublishOptions& publish = options.publish;
    std::vector<std::string> inputs{session.document};
    for (const std::string& file : {publish.xslt, publish.ditaval, publish.preScript, publish.postScript}) {
        inputs.push_back(AbsolutePath(file));
    }
    const Installation own = FindInstallation();
    inputs.insert(inputs.end(), {own.module, own.folder});
    std::ranges::copy(LocalFiles(session.files), std::back_inserter(inputs));
    return inputs;
}

bool LiesInOutput(const std::string& path, const Outcome& outcome) {
    return IsBelowOrEqual(RealPath(path), RealPath(outcome.output));
}

void RequireUsableFiles(const std::string& outFileOption, bool ditaOt, const std::vector<std::string>& inputs,
                        Outcome& outcome) {
    RequireLog(outcome.logName, inputs);
    if (LiesInOutput(outcome.logName, outcome)) {
        throw Stop{kExitUsage, "--log: " + outcome.logName +
                                   " lies in the output folder, which is emptied; name another place"};
    }
    const std::string outFile = AbsolutePath(outFileOption);
    RequireNoInput("--out-file", outFile, inputs);
    const bool named = ditaOt || outFile.ends_with(".html") || outFile.ends_with(".htm");
    if (!outFile.empty() && !(named && LiesInOutput(outFile, outcome))) {
        outcome.undecoded = outFile;
    }
}

void RefuseOutput(const std::string& output, const std::string& why) {
    if (!why.empty()) {
        throw Stop{kExitOutputRefused, output + " " + why};
    }
}

std::string OptionalSystemPath(const std::string& path) {
    return path.empty() ? path : SystemPath(path);
}

PublishValues Values(const Options& options, const Session& session, const std::string& output,
                     const std::string& log) {
    const PublishOptions& publish = options.publish;
    PublishValues values;
    values.documentId = session.documentId;
    values.outputFolder = SystemPath(output) + '\\';
    values.xslt = OptionalSystemPath(publish.xslt);
    values.preScript = OptionalSystemPath(publish.preScript);
    values.postScript = OptionalSystemPath(publish.postScript);
    values.ditaval = OptionalSystemPath(publish.ditaval);
    values.outFile = OptionalSystemPath(publish.outFile);
    values.log = SystemPath(log);
    values.ditaOt = WantsDitaRun(publish, session);
    return values;
}

std::vector<std::string> MissingFiles(const Session& session) {
    std::vector<std::string> missing = LocalFiles(session.files);
    std::erase_if(missing, [](const std::string& file) { return platform::OpensForReading(file); });
    return missing;
}

std::size_t DocumentCount(const DocumentFiles& files) {
    return static_cast<std::size_t>(std::ranges::count_if(
        files.files, [](const DocumentFile& file) { return file.key != "graphicsType"; }));
}

Outcome Run(const Options& options, Session& session, const Screen& screen) {
    Outcome outcome;
    CheckInputs(options.publish);
    outcome.output = AbsolutePath(options.publish.output);
    while (outcome.output.size() > 1 && outcome.output.ends_with('/')) {
        outcome.output.pop_back();
    }
    outcome.logName = options.common.log.empty() ? outcome.output + ".log" : AbsolutePath(options.common.log);
    const PublishValues values = Values(options, session, outcome.output, outcome.logName);
    const std::string request = PublishRequest(values, options.publish);
    outcome.transforms = values.ditaOt || !values.xslt.empty();
    const std::vector<std::string> inputs = Inputs(options, session);
    RefuseOutput(outcome.output, OutputRefusal(outcome.output, inputs, options.publish.force));
    RequireUsableFiles(options.publish.outFile, values.ditaOt, inputs, outcome);
    RefuseOutput(outcome.output, PrepareOutput(outcome.output));

    const std::uint64_t before = LogSize(outcome.logName);
    {
        const platform::InterruptionCleanUp mark(
            [&outcome] { MarkOutput(OutputMarkName(outcome.output).c_str()); });
        Progress progress(screen, outcome.logName, DocumentCount(session.files));
        session.clientCalled = [&](const std::string& client) {
            progress.Transforming(client != "QlDispatcher");
        };
        outcome.reply = Send(session, request);
        session.clientCalled = nullptr;
    }
    MarkOutput(OutputMarkName(outcome.output).c_str());

    outcome.log = ReadRunLog(LogFrom(outcome.logName, before));
    outcome.resultFolder = platform::ToNative(outcome.reply.first);
    outcome.buildLog = platform::ToNative(outcome.reply.second);
    outcome.missing = MissingFiles(session);
    LookOverPages(outcome.output, outcome.pages);
    if (!outcome.undecoded.empty()) {
        LookOverPages(values.ditaOt ? outcome.resultFolder : outcome.undecoded, outcome.pages);
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
    return failed.file.ends_with(".html") || failed.file.ends_with(".htm");
}

void PrintMarkerText(const Outcome& outcome, const Screen& screen) {
    const PublishedPages& pages = outcome.pages;
    if (std::ranges::any_of(outcome.log.failed, IsPage)) {
        screen.Note(
            "marker text is turned back only in pages that are well-formed XML; a stylesheet writes them "
            "with <xsl:output method=\"xml\"/>");
    }
    if (pages.markedTexts > 0) {
        screen.Warning("pages that still hold marker text: " + std::to_string(pages.markedTexts) +
                       ", the first " + pages.firstMarkedText);
    }
    if (pages.markedTexts > 0 && !outcome.undecoded.empty()) {
        screen.Note(
            "marker text is turned back only in .html and .htm files below the output folder, not in " +
            outcome.undecoded);
    }
    if (pages.markedValues > 0) {
        screen.Note("attribute values into which the transformation copied marker text: " +
                    std::to_string(pages.markedValues) + ", the first in " + pages.firstMarkedValue);
    }
}

void PrintFindings(const Outcome& outcome, const Screen& screen) {
    for (const std::string& file : outcome.missing) {
        screen.Warning(file + " is missing or unreadable and is not in the result");
    }
    if (outcome.log.graphicsOnOtherDrive) {
        screen.Warning("some graphics lie on another drive than the document and were left behind");
    }
    for (const FailedFile& failed : outcome.log.failed) {
        screen.Warning(failed.file + " could not be read: " + failed.reason);
    }
    PrintMarkerText(outcome, screen);
}

void PrintResult(const Outcome& outcome, const Screen& screen) {
    screen.Result("result:    " + outcome.resultFolder);
    screen.Result("pages:     " + std::to_string(outcome.pages.pages));
    if (!outcome.buildLog.empty()) {
        screen.Result("build log: " + outcome.buildLog);
    }
    screen.Result("log:       " + outcome.logName);
}

[[noreturn]] void StopForPackaging(const Outcome& outcome) {
    throw Stop{kExitRefused,
               outcome.log.documentsOnSeveralDrives
                   ? "the document's files lie on several drives and cannot be packaged; the log is " +
                         outcome.logName
                   : "packaging ended the run; the log cannot be written: " + outcome.logName};
}

int Judge(const Outcome& outcome, const Session& session, const Screen& screen) {
    const TransformationRecord& record = session.record;
    if (record.failed > 0) {
        screen.Error("the transformation failed: " + record.reason +
                     (record.logFile.empty() ? "" : "; see " + record.logFile));
        return kExitTransformation;
    }
    if (outcome.transforms && outcome.pages.pages == 0) {
        screen.Error("the transformation wrote no page; the log is " + outcome.logName);
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
    const Outcome outcome = Run(options, *session, screen);
    if (outcome.reply.status == kRefused) {
        throw Stop{kExitRefused, "the module refused the request"};
    }
    if (outcome.reply.first.empty()) {
        StopForPackaging(outcome);
    }
    PrintFindings(outcome, screen);
    const int status = Judge(outcome, *session, screen);
    if (screen.Json()) {
        PrintJson(outcome);
    }
    PrintResult(outcome, screen);
    return status;
}

}  // namespace ventrix::desk
