// A folder for the temporary files of a run, which only the owner may enter. Paths are native.
#pragma once

#include <string>
#include <system_error>

#include "platform/interruption.h"

namespace ventrix::platform {

/// Created in the system's folder for temporary files (TMPDIR, /tmp). Removed with its contents when this
/// object is destroyed or the run is interrupted; if that fails, a warning on standard error names it.
class TemporaryFolder {
  public:
    /// The folder's name begins with `prefix`.
    explicit TemporaryFolder(const std::string& prefix);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Absolute; empty if the folder could not be created.
    const std::string& Path() const { return path_; }

    /// Keeps the folder and its contents.
    void Keep() { kept_ = true; }

    /// Why the folder could not be created, naming its parent; empty on success.
    const std::string& Problem() const { return problem_; }

  private:
    std::error_code Remove() const;

    std::string path_;
    bool kept_ = false;
    std::string problem_;
    InterruptionCleanUp cleanUp_;
};

}  // namespace ventrix::platform
