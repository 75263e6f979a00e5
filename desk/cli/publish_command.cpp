#include <algorithm>
#include <filesystem>
#include <iterator>

#include "bridge/contract/request.h"
#include "desk/cli/commands.h"
#include "desk/cli/document_checks.h"
#include "desk/cli/dry_run.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/page_data.h"
#include "desk/cli/protected_output.h"
#include "desk/cli/publish_findings.h"
#include "desk/cli/publish_run.h"
#include "desk/cli/published_pages.h"
#include "desk/report/report_files.h"
#include "desk/script/package_state.h"

namespace ventrix::desk {
namespace {

/// Why a transformation without an error has no pages.
std::string WhyNoPages(const PublishPlan& plan) {
    const std::vector<PackageFile> files = ListPackage(plan.output.utf8);
    const auto count =
        std::ranges::count_if(files, [](const PackageFile& file) { return file.name.ends_with(".xhtml"); });
    if (count == 0 || plan.ditaOt) {
        return "the transformation wrote no pages; see the log " + plan.log.utf8;
    }
    return "the transformation wrote no pages with names in .html or .htm, which alone are decoded, but " +
           std::to_string(count) +
           " in .xhtml; let the stylesheet write .html (DocBook: --string-param html.ext=.html)";
}

/// Prints why the run failed. Returns the exit status, kExitDone if it did not fail.
int ReportFailure(const PublishPlan& plan, const PublishOutcome& outcome, const TransformationRecord& record,
                  RunReport& report, const Screen& screen) {
    for (const FailedScript& script : outcome.failedScripts) {
        report.error = script.description;
        screen.Error(report.error);
        for (const std::string& line : script.lastLines) {
            screen.Note("  " + line);
        }
    }
    if (record.failed > 0) {
        report.error = "the transformation failed: " + record.reason;
    } else if (plan.transforms && outcome.pages.files.empty()) {
        report.error = WhyNoPages(plan);
    } else {
        return outcome.failedScripts.empty() ? kExitDone : kExitTransformation;
    }
    screen.Error(report.error);
    return kExitTransformation;
}

/// Throws Stop if the module did not reach a result.
void RequireResult(const PublishOutcome& outcome) {
    if (outcome.reply.status == kRequestRefused) {
        throw Stop{kExitRefused, "the module refused the request"};
    }
    if (!outcome.reply.first.empty()) {
        return;
    }
    if (outcome.log.documentsOnSeveralDrives) {
        throw Stop{kExitRefused, "the document's files are on several drives and cannot be packaged"};
    }
    throw Stop{kExitRefused, outcome.log.broken.empty()
                                 ? "packaging failed: the module could not write its log"
                                 : "packaging failed: the run would change its own input " +
                                       outcome.log.broken.front().utf8};
}

/// The files that pages of a DITA transformation may come from. A toolkit also writes a contents page
/// index.html, which no topic of that name must be taken for.
std::vector<NativePath> TopicsOf(const DocumentFiles& files) {
    std::vector<NativePath> topics;
    for (const DocumentFile& file : files.files) {
        const std::filesystem::path path = ToFilesystem(file.path);
        const bool isPage = !file.path.Empty() && file.key == kDocumentKey && !file.opaque;
        if (isPage && path.extension() != ".ditamap" && path.stem() != "index") {
            topics.push_back(file.path);
        }
    }
    return topics;
}

/// The pages with their sources. A stylesheet writes one page under the name that it was given; what a script
/// made a page from is unknown.
std::vector<ReportedPage> PagesWithSources(const PublishPlan& plan, const Session& session,
                                           const PublishOutcome& outcome) {
    const std::vector<NativePath> sources =
        plan.ditaOt ? TopicsOf(session.files) : std::vector<NativePath>{session.document};
    const PageSources pageSources(sources, session.document, outcome.resultFolder);
    std::vector<ReportedPage> pages;
    for (const NativePath& page : outcome.pages.files) {
        NativePath source = plan.transforms ? pageSources.SourceOf(page) : NativePath{};
        if (!plan.ditaOt && page == plan.outFile) {
            source = session.document;
        }
        pages.push_back({page, source});
    }
    return pages;
}

void FillReport(const PublishPlan& plan, const Session& session, const PublishOutcome& outcome,
                RunReport& report) {
    report.status = outcome.reply.status;
    report.resultFolder = outcome.resultFolder;
    report.startPage = outcome.startPage;
    report.buildLog = outcome.buildLog;
    report.toolkit = plan.toolkit;
    report.failed = outcome.log.failed;
    report.missing = outcome.missing;
    report.pages = PagesWithSources(plan, session, outcome);
}

/// The result of a failed run is no longer where the module reported it.
void ForgetResult(RunReport& report) {
    report.resultFolder = report.startPage = report.buildLog = {};
    report.pages.clear();
}

void PrintResult(const PublishPlan& plan, const PublishOutcome& outcome, const NativePath& log,
                 const Screen& screen) {
    screen.Result("result:    " + outcome.resultFolder.utf8);
    screen.Result("pages:     " + std::to_string(outcome.pages.files.size()));
    if (!plan.toolkit.empty()) {
        screen.Result("toolkit:   " + plan.toolkit);
    }
    if (!outcome.buildLog.Empty()) {
        screen.Result("build log: " + outcome.buildLog.utf8);
    }
    screen.Result("log:       " + log.utf8);
}

/// Reports the findings and notes of a run that reached a result. Returns the exit status before the output
/// folder is settled.
int Conclude(const PublishPlan& plan, const PublishOptions& options, const Session& session,
             const PublishOutcome& outcome, RunReport& report, const Screen& screen) {
    for (const Finding& finding : PublishFindings(plan, options, session, outcome)) {
        Warn(report, screen, finding);
    }
    for (const std::string& note : PublishNotes(plan, outcome)) {
        screen.Note(note);
    }
    return ReportFailure(plan, outcome, session.record, report, screen);
}

/// Writes the report, if one is wanted, when its links lead to the result. A report that is lost is a
/// finding.
void DeliverLoss(const LossReport& loss, const PublishPlan& plan, RunReport& report, const Screen& screen) {
    for (const std::string& query : IdleQueries(loss)) {
        screen.Note("--preserve-xpath: '" + query + "' selects no element in any file of the document");
    }
    report.loss = {plan.report,        loss.notCounted,      loss.items,
                   loss.copied.size(), loss.repeated.size(), loss.changed.size()};
    if (plan.report.Empty()) {
        return;
    }
    if (!loss.notCounted.empty() && !report.pages.empty()) {
        Warn(report, screen, {{}, 0, "report", "the report has no counts: " + loss.notCounted});
    }
    if (const std::string problem = WriteLossReport(loss, plan.report); !problem.empty()) {
        report.loss->file = {};
        Warn(report, screen, {{}, 0, "report", problem});
    }
}

}  // namespace

int Publish(const Options& options, const Screen& screen, RunReport& report) {
    const auto session = StartSession(options.common, screen, report);
    const PublishPlan plan = MakePublishPlan(options, *session);
    ReportAbsentNames(options.publish, session->files.names, report, screen);
    if (options.publish.dryRun) {
        ShowDryRun(plan, options, *session, report, screen);
        return report.warnings.empty() ? kExitDone : kExitFindings;
    }
    PrivateLog log;
    ProtectedOutput output({.folder = ToFilesystem(plan.output),
                            .inputs = InputPaths(plan.inputs),
                            .force = options.publish.force,
                            .request = options.common.document,
                            .version = kVersion},
                           report, screen);
    PublishOutcome outcome;
    int status = kExitDone;
    try {
        outcome = RunPublish(plan, options, *session, log, screen);
        FillReport(plan, *session, outcome, report);
        RequireResult(outcome);
        std::ranges::move(AddPageData(options.publish, *session, outcome, report.pages),
                          std::back_inserter(outcome.unfinished));
        status = Conclude(plan, options.publish, *session, outcome, report, screen);
    } catch (...) {
        DeliverLog(log, plan.log, report, screen);
        output.RollBack();
        ForgetResult(report);
        throw;
    }
    DeliverLog(log, plan.log, report, screen);
    status = output.Settle(status);
    const bool hasResult = status == kExitDone || status == kExitFindings;
    LossReport loss;
    if (hasResult) {
        loss = LossOf(std::move(outcome.markers), plan, options.publish, *session, outcome.resultFolder,
                      report.pages);
        DeliverLoss(loss, plan, report, screen);
    }
    if (status == kExitDone && !report.warnings.empty()) {
        status = kExitFindings;
    }
    if (hasResult) {
        PrintResult(plan, outcome, report.log, screen);
        PrintLoss(loss, report.loss->file, screen);
    } else {
        ForgetResult(report);
    }
    return status;
}

}  // namespace ventrix::desk
