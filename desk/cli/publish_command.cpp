#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "bridge/contract/request.h"
#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/protected_output.h"
#include "desk/cli/publish_findings.h"
#include "desk/cli/publish_run.h"

namespace ventrix::desk {
namespace {

/// Prints why the run failed. Empty reasons mean that it did not.
int ReportFailure(const PublishPlan& plan, const PublishOutcome& outcome, const TransformationRecord& record,
                  const Screen& screen) {
    for (const FailedScript& script : outcome.failedScripts) {
        screen.Error(script.description);
        for (const std::string& line : script.lastLines) {
            screen.Note("  " + line);
        }
    }
    if (record.failed > 0) {
        screen.Error("the transformation failed: " + record.reason +
                     (record.logFile.Empty() ? "" : "; see " + record.logFile.utf8));
    } else if (plan.transforms && outcome.pages.pages == 0) {
        screen.Error("the transformation wrote no pages; see the log " + plan.log.utf8);
    } else if (outcome.failedScripts.empty()) {
        return kExitDone;
    }
    return kExitTransformation;
}

/// Throws Stop if the module did not get as far as a result.
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

nlohmann::json FailedAsJson(const RunLog& log) {
    auto list = nlohmann::json::array();
    for (const FailedFile& failed : log.failed) {
        list.push_back({{"file", failed.file}, {"reason", failed.reason}});
    }
    return list;
}

void PrintJson(const PublishPlan& plan, const PublishOutcome& outcome, int status) {
    PrintObject({{"status", outcome.reply.status},
                 {"exitStatus", status},
                 {"resultFolder", outcome.resultFolder},
                 {"buildLog", outcome.buildLog},
                 {"log", plan.log},
                 {"failed", FailedAsJson(outcome.log)},
                 {"missing", outcome.missing},
                 {"markedValues", outcome.pages.markedValues}});
}

void PrintResult(const PublishPlan& plan, const PublishOutcome& outcome, const Screen& screen) {
    screen.Result("result:    " + outcome.resultFolder.utf8);
    screen.Result("pages:     " + std::to_string(outcome.pages.pages));
    if (!plan.toolkit.empty()) {
        screen.Result("toolkit:   " + plan.toolkit);
    }
    if (!outcome.buildLog.Empty()) {
        screen.Result("build log: " + outcome.buildLog.utf8);
    }
    screen.Result("log:       " + plan.log.utf8);
}

void PrintFinding(const Finding& finding, const Screen& screen) {
    const std::string line = finding.line > 0 ? ":" + std::to_string(finding.line) : "";
    screen.Warning((finding.file.Empty() ? "" : finding.file.utf8 + line + ": ") + finding.text);
}

/// What a run that reached a result reports: the findings, and the exit status before the output folder is
/// settled.
int Conclude(const PublishPlan& plan, const Session& session, const PublishOutcome& outcome,
             std::vector<Finding>& findings, const Screen& screen) {
    std::ranges::move(PublishFindings(plan, session, outcome), std::back_inserter(findings));
    for (const Finding& finding : findings) {
        PrintFinding(finding, screen);
    }
    for (const std::string& note : PublishNotes(plan, outcome)) {
        screen.Note(note);
    }
    const int failure = ReportFailure(plan, outcome, session.record, screen);
    const bool clean = findings.empty() && session.files.remarks.empty();
    return failure != kExitDone ? failure : clean ? kExitDone : kExitFindings;
}

}  // namespace

int Publish(const Options& options, const Screen& screen) {
    const auto session = StartSession(options.common, screen);
    const PublishPlan plan = MakePublishPlan(options, *session);
    PrivateLog log;
    ProtectedOutput output({.folder = ToFilesystem(plan.output),
                            .inputs = InputPaths(plan.inputs),
                            .force = options.publish.force,
                            .request = options.common.document,
                            .version = kVersion},
                           screen);
    std::vector<Finding> findings;
    PublishOutcome outcome;
    int status = kExitDone;
    try {
        outcome = RunPublish(plan, options, *session, log, screen);
        RequireResult(outcome);
        status = Conclude(plan, *session, outcome, findings, screen);
    } catch (...) {
        if (const std::string problem = log.AppendTo(plan.log); !problem.empty()) {
            screen.Warning(problem);
        }
        output.RollBack();
        throw;
    }
    if (const std::string problem = log.AppendTo(plan.log); !problem.empty()) {
        screen.Warning(problem);
        status = std::max<int>(status, kExitFindings);
    }
    status = output.Settle(status);
    if (screen.Json()) {
        PrintJson(plan, outcome, status);
    }
    if (status == kExitDone || status == kExitFindings) {
        PrintResult(plan, outcome, screen);
    }
    return status;
}

}  // namespace ventrix::desk
