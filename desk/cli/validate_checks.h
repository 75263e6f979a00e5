// What a publish of a document would report, found without one: nothing is packaged or written.
#pragma once

#include <vector>

#include "desk/checks/finding.h"
#include "desk/cli/options.h"
#include "desk/cli/publish_plan.h"
#include "desk/cli/session.h"

namespace ventrix::desk {

/// XML files that are not well-formed; for a DITA document what the built-in toolkit reports: broken links,
/// unknown keys, dead content references, and what it does not handle, unless the options name another
/// toolkit; for a stylesheet its version and the inclusions that fail. A null plan means a
/// transformation as DITA. The `missing` files, which are findings already, are not reported again.
std::vector<Finding> PublishProblems(const Session& session, const Options& options, const PublishPlan* plan,
                                     const std::vector<NativePath>& missing);

}  // namespace ventrix::desk
