// What a run of the command line reports, whatever its outcome: the contents of the object that --json
// prints, which docs/json.md describes. A command fills the report as far as it gets; main adds how the run
// ended and prints it. Paths are absolute; an empty one becomes null. Strings are UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/cli/run_log.h"
#include "desk/cli/screen.h"
#include "desk/paths/paths.h"
#include "desk/report/loss_report.h"

namespace ventrix::desk {

struct ReportedPage {
    NativePath page;
    NativePath source;  ///< Empty if unknown.
};

/// What the loss report has counted.
struct LossSummary {
    NativePath file;         ///< Empty if none was written.
    std::string notCounted;  ///< Why nothing was counted; empty if it was.
    std::vector<ItemCount> items;
    std::size_t copied = 0, repeated = 0, changed = 0;
};

/// The two strings of the module's reply, unchanged.
struct ReplyStrings {
    std::string first, second;
};

struct RunReport {
    NativePath document;      ///< Empty if the run did not come to it.
    std::string deliverable;  ///< Of a project file; empty if it has no name.
    int exitStatus = 0;
    std::string error;  ///< Why the run failed; empty if it did not.
    int errorLine = 0;  ///< In a document that cannot be read; 0 if unknown.
    int errorColumn = 0;
    std::optional<std::int32_t> status;  ///< The module's; nothing if it did not reply.
    NativePath resultFolder, startPage, buildLog, log;
    std::string toolkit;  ///< What transformed the document; empty if nothing did.
    std::vector<ReportedPage> pages;
    std::vector<Finding> warnings;
    std::vector<FailedFile> failed;          ///< Files that the module could not load.
    std::vector<NativePath> missing;         ///< Referenced files that are missing or unreadable.
    std::vector<NativePath> valid, unsaved;  ///< From a Validate.
    std::vector<Finding> unusable;           ///< From a Validate: missing and unsaved files, as findings.
    std::optional<LossSummary> loss;         ///< Of a publish with a result.
    std::optional<ReplyStrings> reply;       ///< From a request that was given as text.
};

/// Prints a finding as "FILE:LINE:COLUMN: TEXT [CODE]", without what is unknown.
void PrintFinding(const Screen& screen, const Finding& finding);

/// Adds a warning to the report and prints it.
void Warn(RunReport& report, const Screen& screen, const Finding& finding);

/// Prints the report as a JSON object.
void PrintReport(const RunReport& report);

}  // namespace ventrix::desk
