#include <algorithm>
#include <array>
#include <optional>

#include "bridge/contract/request.h"
#include "desk/cli/commands.h"
#include "desk/cli/document_checks.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/file_findings.h"
#include "desk/cli/option_checks.h"
#include "desk/cli/path_options.h"
#include "desk/cli/private_log.h"
#include "desk/cli/publish_plan.h"
#include "desk/cli/request_text.h"
#include "desk/cli/run_log.h"
#include "desk/cli/session.h"
#include "desk/cli/validate_checks.h"
#include "desk/xml/lenient_load.h"

namespace ventrix::desk {
namespace {

void ShowSection(const Screen& screen, const char* title, const std::vector<NativePath>& paths) {
    if (paths.empty()) {
        return;
    }
    screen.Result(std::string(title) + " (" + std::to_string(paths.size()) + ")");
    for (const NativePath& path : paths) {
        screen.Result("  " + path.utf8);
    }
}

/// `mask` is the module's, which only looks whether it can open the files.
std::string Summary(std::int32_t mask, std::size_t findings) {
    std::string text;
    const auto add = [&](std::int32_t bit, const char* problem) {
        if ((mask & bit) != 0) {
            text += (text.empty() ? "" : "; ") + std::string(problem);
        }
    };
    add(kValidateBroken, "files are missing or unreadable");
    add(kValidateUnsaved, "files have unsaved changes");
    add(kValidateOnSeveralRoots, "the files are on several drives and cannot be packaged");
    if (mask != 0) {
        return text + " (mask " + std::to_string(mask) + ")";
    }
    return findings == 0 ? "can be published"
                         : "a publish would have " + std::to_string(findings) +
                               (findings == 1 ? " finding" : " findings");
}

/// The files that are not well-formed, which the module can open nevertheless.
std::vector<NativePath> TakeMalformed(std::vector<NativePath>& files, const std::vector<Finding>& findings) {
    std::vector<NativePath> malformed;
    std::erase_if(files, [&](const NativePath& file) {
        const bool isMalformed = std::ranges::any_of(findings, [&file](const Finding& finding) {
            return finding.code == kNotReadable && finding.file == file;
        });
        if (isMalformed) {
            malformed.push_back(file);
        }
        return isMalformed;
    });
    return malformed;
}

void Show(const Screen& screen, const RunReport& report, const std::vector<NativePath>& malformed) {
    ShowSection(screen, "valid", report.valid);
    ShowSection(screen, "missing or unreadable", report.missing);
    ShowSection(screen, "not well-formed", malformed);
    ShowSection(screen, "unsaved", report.unsaved);
    screen.Result(Summary(*report.status, report.warnings.size()));
}

/// Files that the log does not mention, because it could not be written completely.
std::vector<NativePath> Unlisted(std::vector<NativePath> files, const RunLog& log) {
    std::erase_if(files, [&log](const NativePath& file) {
        return std::ranges::any_of(
            std::array{&log.valid, &log.broken, &log.unsaved},
            [&file](const auto* list) { return std::ranges::find(*list, file) != list->end(); });
    });
    return files;
}

/// The referenced files that cannot be published, as findings.
std::vector<Finding> UnusableFiles(const Session& session, const RunLog& log, std::int32_t mask) {
    std::vector<Finding> findings = MissingReferences(session.files, log.broken);
    for (const NativePath& file : log.unsaved) {
        findings.push_back({file, 0, "unsaved", "has unsaved changes"});
    }
    if ((mask & kValidateOnSeveralRoots) != 0) {
        findings.push_back({session.document, 0, "several-drives",
                            "the files are on several drives and cannot be packaged"});
    }
    return findings;
}

/// For a document that cannot be read, the place of its first error too.
std::unique_ptr<Session> StartChecked(const Options& options, const Screen& screen, RunReport& report) {
    report.document = AbsolutePath({options.common.document});
    try {
        return StartSession(options.common, screen, report);
    } catch (const Stop& stop) {
        if (stop.status == kExitUnreadable) {
            const LenientDocument loaded = LoadLeniently(report.document);
            report.errorLine = loaded.line;
            report.errorColumn = loaded.column;
        }
        throw;
    }
}

/// What a publish with the project file would do; nothing if the options of the publish are not known:
/// without a project file, or if the command line of the publish has to say more. Throws Stop if it could not
/// run.
std::optional<PublishPlan> PlanOf(const Options& options, const Session& session) {
    const bool isIncomplete =
        options.publish.output.empty() && !session.files.dita && AsksForDitaTransformation(options.publish);
    return options.common.config.empty() || isIncomplete
               ? std::nullopt
               : std::optional(PlanTransformation(options, session));
}

/// Sends the request. Throws Stop if the module did not check the files.
RunLog CheckFiles(Session& session, const NativePath& userLog, const Screen& screen, RunReport& report) {
    PrivateLog privateLog;
    const Reply reply =
        Send(session, ValidateRequest(session.documentId, RequireSystemPath(privateLog.Path())));
    if (reply.status < 0) {
        throw Stop{kExitRefused, "the module refused the request"};
    }
    if (reply.status == kValidateWithoutLog) {
        throw Stop{kExitRefused, "the module could not write its log"};
    }
    report.status = reply.status;
    RunLog log = ReadRunLog(privateLog.Text());
    DeliverLog(privateLog, userLog, report, screen);
    return log;
}

}  // namespace

int Validate(const Options& options, const Screen& screen, RunReport& report) {
    RequireFilters(RequiredFiles("--ditaval", options.publish.ditaval));
    const auto session = StartChecked(options, screen, report);
    const std::optional<PublishPlan> plan = PlanOf(options, *session);
    const NativePath userLog = AbsolutePath({options.common.log});
    std::vector<NativePath> inputs = plan.has_value() ? plan->inputs : LocalFiles(session->files);
    inputs.push_back(AbsolutePath({options.common.config}));
    RequireLog(userLog, inputs);
    ReportAbsentNames(options.publish, session->files.names, report, screen);
    const RunLog log = CheckFiles(*session, userLog, screen, report);
    const std::int32_t mask = *report.status;
    report.valid = log.valid;
    report.missing = log.broken;
    report.unsaved = log.unsaved;
    report.unusable = UnusableFiles(*session, log, mask);
    for (const Finding& finding : report.unusable) {
        PrintFinding(screen, finding);
    }
    for (const NativePath& file : Unlisted(LocalFiles(session->files), log)) {
        Warn(report, screen,
             {file, 0, "not-checked", "the module's log does not report whether it is readable"});
    }
    if (log.graphicsOnOtherDrive) {
        Warn(report, screen,
             {session->document, 0, "graphics-on-other-drive",
              "some graphics are on a different drive from the document and would not be packaged"});
    }
    // A publish of files on several drives ends before it reads them.
    if ((mask & kValidateOnSeveralRoots) == 0) {
        for (const Finding& finding :
             PublishProblems(*session, options, plan ? &*plan : nullptr, log.broken)) {
            Warn(report, screen, finding);
        }
    }
    const std::vector<NativePath> malformed = TakeMalformed(report.valid, report.warnings);
    Show(screen, report, malformed);
    return mask == 0 && report.warnings.empty() ? kExitDone : kExitFindings;
}

}  // namespace ventrix::desk
