// Ctrl-C: the run ends at once with status 130. The module writes nothing in source folders, so nothing is
// left half-written there; the output folder keeps its mark, so that the next run may take it.
#pragma once

#include <string>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Makes an interruption end the program with status 130.
void WatchInterruptions();

/// While it lives, an interruption writes this file first.
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
