// Counts what a publish preserved: reads the files with marker text of a run, before and after the
// transformation, and makes the loss report of them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "desk/checks/visible_markers.h"
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
    std::string notCounted;  ///< Empty if they were counted.
    SourceTrace sources;
    ResultTrace result;
    StringTable strings;
};

Preservation PreservationOf(const PublishOptions& options);

/// Reads the marker groups of a run when it reaches them. The module calls it in the middle of its work, so
/// nothing is thrown.
class MarkerCounter {
  public:
    /// Everything must outlive the counter. `copies` is where the recorder of a script copies what it finds.
    MarkerCounter(const PublishPlan& plan, const PublishOptions& options, const Session& session,
                  MarkedFolders copies);

    void TransformationStarts();
    void TransformationEnds();

    /// What was read, and what the recorder has copied. `log` names the pages that were not decoded.
    CountedMarkers Finish(const RunLog& log);

  private:
    void ReadSources(const std::string& folder);
    void ReadResult(const std::string& folder);

    const PublishPlan& plan_;
    const Session& session_;
    MarkedFolders copies_;
    Preservation preservation_;
    std::vector<std::filesystem::path> sourceNames_;
    bool hasSources_ = false;
    bool hasResult_ = false;
    CountedMarkers markers_;
};

/// Throws Stop, before anything has changed, if the file cannot be the report: its name has another ending,
/// its folder is missing, it is an input of the run, or the run replaces it. Accepts an empty path.
void RequireReport(const NativePath& report, const PublishPlan& plan);

/// Texts of a trace of the markers, with the pages where they are after the run.
std::vector<VisibleMarker> PlacedTexts(const std::vector<BrokenText>& texts, const CountedMarkers& markers,
                                       const PublishPlan& plan, const Session& session,
                                       const NativePath& resultFolder);

/// The report of a run. `pages` are those of its result.
LossReport LossOf(CountedMarkers markers, const PublishPlan& plan, const PublishOptions& options,
                  const Session& session, const NativePath& resultFolder,
                  const std::vector<ReportedPage>& pages);

/// The preserved XPath queries that select no element in any file; none if nothing was counted.
std::vector<std::string> IdleQueries(const LossReport& report);

/// Two lines of the result. `file` is that of the report; empty if there is none.
void PrintLoss(const LossReport& report, const NativePath& file, const Screen& screen);

}  // namespace ventrix::desk
