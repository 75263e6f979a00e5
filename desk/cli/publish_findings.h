// What a publish has to report, as findings in the order of the run.
#pragma once

#include <vector>

#include "desk/checks/finding.h"
#include "desk/cli/publish_run.h"

namespace ventrix::desk {

/// All findings of a run, except a failed transformation or script.
std::vector<Finding> PublishFindings(const PublishPlan& plan, const PublishOptions& options,
                                     const Session& session, const PublishOutcome& outcome);

/// Adds a finding if libxslt has to run a stylesheet of a newer version.
void AddStylesheetVersion(const NativePath& stylesheet, std::vector<Finding>& findings);

/// Further lines for the user, which are not findings.
std::vector<std::string> PublishNotes(const PublishPlan& plan, const PublishOutcome& outcome);

}  // namespace ventrix::desk
