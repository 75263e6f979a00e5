// The output folder of a command while it runs: prepared before the run, settled after it, and restored if
// the run is interrupted.
#pragma once

#include <memory>
#include <optional>

#include "desk/cli/run_report.h"
#include "desk/cli/screen.h"
#include "desk/output/output_keeper.h"
#include "platform/interruption.h"

namespace ventrix::desk {

class ProtectedOutput {
  public:
    /// Prints the keeper's notes. Throws Stop if the folder is refused.
    ProtectedOutput(const OutputOrder& order, RunReport& report, const Screen& screen);

    /// Keeps the result of a run with this exit status, if it is 0 or 1, or restores the folder. Reports what
    /// happened to the user's own files. Returns the exit status, which differs if the result could not be
    /// recorded.
    int Settle(int status);

    /// Restores the folder as it was before the run, and prints where the files of the failed run are.
    void RollBack();

  private:
    void Warn(const std::string& code, const NativePath& file, const std::string& text);
    void Report(const OutputReport& report);

    RunReport& report_;
    const Screen& screen_;
    std::unique_ptr<OutputKeeper> keeper_;
    std::optional<platform::InterruptionCleanUp> cleanUp_;
};

/// For the order of a keeper.
std::vector<std::filesystem::path> InputPaths(const std::vector<NativePath>& inputs);

}  // namespace ventrix::desk
