// The commands of `ventrix`. Each fills the report, if it has one, as it proceeds, returns the exit status of
// the program, and throws Stop when it cannot continue. None prints the report as JSON; main does that once,
// at the end.
#pragma once

#include "desk/cli/options.h"
#include "desk/cli/run_report.h"
#include "desk/cli/screen.h"

namespace ventrix::desk {

int Publish(const Options& options, const Screen& screen, RunReport& report);
int Validate(const Options& options, const Screen& screen, RunReport& report);
int Request(const Options& options, const Screen& screen, RunReport& report);

/// Writes a project file for the document into the current folder.
int Init(const Options& options, const Screen& screen);

}  // namespace ventrix::desk
