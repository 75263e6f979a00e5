// The output folder of a command while it runs: taken before, settled after it, and put back as it was when
// the run is interrupted.
#pragma once

#include <memory>
#include <optional>

#include "desk/cli/screen.h"
#include "desk/output/output_keeper.h"
#include "platform/interruption.h"

namespace ventrix::desk {

class ProtectedOutput {
  public:
    /// Prints what the keeper notes. Throws Stop if the folder is refused.
    ProtectedOutput(const OutputOrder& order, const Screen& screen);

    /// Keeps the result of a run with this exit status, if it is 0 or 1, or restores the folder. Prints what
    /// became of the user's own files. Returns the exit status, which a finding makes 1 at least.
    int Settle(int status);

    /// Restores the folder as it was before the run, and prints where the files of the failed run are.
    void RollBack();

  private:
    int Report(const OutputReport& report, int status) const;

    const Screen& screen_;
    std::unique_ptr<OutputKeeper> keeper_;
    std::optional<platform::InterruptionCleanUp> cleanUp_;
};

/// For the order of a keeper.
std::vector<std::filesystem::path> InputPaths(const std::vector<NativePath>& inputs);

}  // namespace ventrix::desk
