// A folder for the temporary files of a run, which only the owner may enter. Paths are native.
#pragma once

#include <string>
#include <system_error>

#include "platform/interruption.h"

namespace ventrix::platform {

/// Made below the system's folder for temporary files (TMPDIR, /tmp); removed with all that is in it at the
/// end of this object or when the run is interrupted. Where that fails, a warning on standard error names
/// it.
class TemporaryFolder {
  public:
    /// The folder's name begins with `prefix`.
    explicit TemporaryFolder(const std::string& prefix);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Absolute; empty if the folder could not be made.
    const std::string& Path() const { return path_; }

    /// Lets the folder and what is in it stay.
    void Keep() { kept_ = true; }

    /// Why not, naming the folder for temporary files; empty on success.
    const std::string& Problem() const { return problem_; }

  private:
    std::error_code Remove() const;

    std::string path_;
    bool kept_ = false;
    std::string problem_;
    InterruptionCleanUp cleanUp_;
};

}  // namespace ventrix::platform
