// Counts what a publish preserved: reads the copies of files with marker text that a run has made, and makes
// the loss report of them.
#pragma once

#include <string>
#include <vector>

#include "desk/cli/options.h"
#include "desk/cli/publish_plan.h"
#include "desk/cli/run_log.h"
#include "desk/cli/run_report.h"
#include "desk/cli/screen.h"
#include "desk/cli/session.h"
#include "desk/report/loss_report.h"
#include "desk/script/marked_copies.h"

namespace ventrix::desk {

/// The marker groups of a run on both sides of the transformation.
struct CountedMarkers {
    std::string notCounted = "the run did not get that far";  ///< Empty if they were counted.
    SourceTrace sources;
    ResultTrace result;
    StringTable strings;
};

/// Throws Stop, before anything has changed, if the file cannot be the report: its name has another ending,
/// its folder is missing, it is an input of the run, or the run replaces it. Accepts an empty path.
void RequireReport(const NativePath& report, const PublishPlan& plan);

Preservation PreservationOf(const PublishOptions& options);

/// Reads the copies, before the module's result is cleaned. `log` names the pages that were not decoded.
CountedMarkers CountMarkers(const MarkedFolders& copies, const PublishPlan& plan,
                            const PublishOptions& options, const Session& session, const RunLog& log);

/// The report of a run. `pages` are those of its result.
LossReport LossOf(CountedMarkers markers, const PublishPlan& plan, const PublishOptions& options,
                  const Session& session, const NativePath& resultFolder,
                  const std::vector<ReportedPage>& pages);

/// Two lines of the result. `file` is that of the report; empty if there is none.
void PrintLoss(const LossReport& report, const NativePath& file, const Screen& screen);

}  // namespace ventrix::desk
