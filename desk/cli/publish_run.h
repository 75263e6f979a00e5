// Runs a publish: sends the request with the output folder protected, monitors the log and the scripts, and
// collects the outcome. Prints only the progress.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/checks/leftover_markers.h"
#include "desk/checks/visible_markers.h"
#include "desk/cli/loss_count.h"
#include "desk/cli/private_log.h"
#include "desk/cli/publish_plan.h"
#include "desk/cli/published_pages.h"
#include "desk/cli/run_log.h"
#include "desk/cli/screen.h"
#include "desk/output/output_keeper.h"

namespace ventrix::desk {

/// A user's script that failed.
struct FailedScript {
    std::string description;             ///< One line that names the script.
    std::vector<std::string> lastLines;  ///< Of its output.
};

struct PublishOutcome {
    Reply reply;
    RunLog log;
    NativePath resultFolder, buildLog;
    NativePath startPage;  ///< The page to open first; empty if there is none.
    PublishedPages pages;
    std::vector<FailedScript> failedScripts;
    std::vector<NativePath> missing;     ///< Referenced files that are missing or unreadable.
    std::vector<Finding> unfinished;     ///< What the module left undone without reporting it.
    CleanedFiles cleaned;                ///< Marker text that was taken out of places that are not decoded.
    CountedMarkers markers;              ///< For the loss report.
    std::vector<NativePath> undecoded;   ///< Pages from whose text marker text was taken out.
    std::vector<VisibleMarker> visible;  ///< What readers see of marker text, once for each page.
    std::vector<VisibleMarker> dropped;  ///< Elements that could not be restored, the first of each page.
    NativePath markedSource;             ///< A source with a marker word, which turns that off; may be empty.
};

/// The folder must have been taken for this run. Throws Stop if the module sends no reply.
PublishOutcome RunPublish(const PublishPlan& plan, const Options& options, Session& session,
                          const PrivateLog& log, const Screen& screen);

}  // namespace ventrix::desk
