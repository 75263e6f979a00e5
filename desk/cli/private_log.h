// The report log of one run. The module writes it to a private temporary folder, so that what a run reports
// never depends on the log that the user chose; afterwards its lines are appended to the user's.
#pragma once

#include <string>

#include "desk/cli/run_report.h"
#include "desk/cli/screen.h"
#include "desk/paths/paths.h"
#include "platform/temp_folder.h"

namespace ventrix::desk {

class PrivateLog {
  public:
    /// Throws Stop if no temporary folder can be created.
    PrivateLog();

    const NativePath& Path() const { return path_; }

    /// Everything that the run has written so far; empty if it has not opened the log. Throws Stop if it
    /// cannot be read.
    std::string Text() const;

    /// Appends the lines to the user's log. On success, and if the user wants no log, the result is empty and
    /// the private log is removed with this object. Else the result is one line that names the private log,
    /// which then stays.
    std::string AppendTo(const NativePath& log);

  private:
    platform::TemporaryFolder folder_;
    NativePath path_;
};

/// Appends the lines to the user's log and notes in the report which file has them. That they are only in the
/// private log is a finding.
void DeliverLog(PrivateLog& log, const NativePath& userLog, RunReport& report, const Screen& screen);

}  // namespace ventrix::desk
