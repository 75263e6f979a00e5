// What a publish would do, without doing it: nothing is created, changed or locked.
#pragma once

#include "desk/cli/options.h"
#include "desk/cli/publish_plan.h"
#include "desk/cli/run_report.h"
#include "desk/cli/screen.h"
#include "desk/cli/session.h"

namespace ventrix::desk {

/// Prints which files would be packaged, what would transform them, and which files of the output folder
/// would be replaced and kept. A missing file is a warning. Throws Stop if a publish would refuse the output
/// folder.
void ShowDryRun(const PublishPlan& plan, const Options& options, const Session& session, RunReport& report,
                const Screen& screen);

}  // namespace ventrix::desk
