// What is added to the pages of a result on request: the map of their elements, and the viewer.
#pragma once

#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/cli/options.h"
#include "desk/cli/publish_run.h"
#include "desk/cli/run_report.h"
#include "desk/cli/session.h"

namespace ventrix::desk {

/// The code of a finding about a page of the result that is not well-formed.
inline constexpr char kPageNotXml[] = "page-not-xml";

/// What a page that is not XML lacks of what the options ask for, as a part of a sentence.
std::string MissingPageData(const PublishOptions& options);

/// Writes the map beside the start page and adds the viewer to the pages, as far as the options ask for them.
/// Returns what could not be done, except for pages that the module could not load.
std::vector<Finding> AddPageData(const PublishOptions& options, const Session& session,
                                 const PublishOutcome& outcome, const std::vector<ReportedPage>& pages);

}  // namespace ventrix::desk
