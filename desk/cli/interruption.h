// Handles Ctrl-C and other requests to stop: the program exits immediately with status 130. Source folders
// need no cleanup because the module never writes to them. The output folder is marked as ours, so that the
// next run may empty it.
#pragma once

#include <string>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Installs the signal handlers. Call once, at start.
void WatchInterruptions();

/// During its lifetime, an interruption creates this file before the program exits. One instance at a time.
class InterruptionMark {
  public:
    explicit InterruptionMark(const NativePath& file);
    ~InterruptionMark();
    InterruptionMark(const InterruptionMark&) = delete;
    InterruptionMark& operator=(const InterruptionMark&) = delete;

  private:
    std::string fileName_;
};

}  // namespace ventrix::desk
