// What a publish has to report, as findings in the order of the run.
#pragma once

#include <vector>

#include "desk/checks/finding.h"
#include "desk/cli/publish_run.h"

namespace ventrix::desk {

/// All findings of a run, except a failed transformation or script.
std::vector<Finding> PublishFindings(const PublishPlan& plan, const Session& session,
                                     const PublishOutcome& outcome);

/// Further lines for the user, which are not findings.
std::vector<std::string> PublishNotes(const PublishPlan& plan, const PublishOutcome& outcome);

}  // namespace ventrix::desk
