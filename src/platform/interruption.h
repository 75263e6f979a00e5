// What happens when the user or the system interrupts a run: Ctrl-C (SIGINT), SIGTERM and SIGHUP on POSIX;
// Ctrl-C, Ctrl-Break and the closing of the console on Windows.
//
// From then on the run, which may be anywhere in the module, is suspended. Everything that it started ends,
// the registered clean-ups run, the last registered first, "interrupted" goes to standard error, and the
// process ends with 128 and the signal's number. Further interruptions change nothing. A process that is
// ended by force cleans nothing up, but what it started ends nevertheless (child_process.h).
#pragma once

#include <functional>

namespace ventrix::platform {

/// Handles interruptions from now on; to be called by the main thread before it starts another one. An
/// interruption that the process was started to ignore (nohup) stays ignored.
void HandleInterruptions();

/// Called when the work is done, before the static objects are destroyed: from now on an interruption changes
/// nothing, and the process ends with its own exit status.
void StopHandlingInterruptions();

/// While it lives, interruptions wait. Used by the main thread only, around a few short steps that belong
/// together. May be nested. Has no effect in a clean-up.
class InterruptionPause {
  public:
    InterruptionPause();
    ~InterruptionPause();
    InterruptionPause(const InterruptionPause&) = delete;
    InterruptionPause& operator=(const InterruptionPause&) = delete;
};

/// While it lives, an interruption calls the action. Made and destroyed by the main thread; several may live
/// at a time. On POSIX the action runs in a copy of the process: it sees the memory as it was when the
/// interruption came and changes files only. Locks of the process's own on files are still held. What it
/// throws is ignored.
class InterruptionCleanUp {
  public:
    explicit InterruptionCleanUp(std::function<void()> action);
    ~InterruptionCleanUp();
    InterruptionCleanUp(const InterruptionCleanUp&) = delete;
    InterruptionCleanUp& operator=(const InterruptionCleanUp&) = delete;

  private:
    std::function<void()> action_;
};

}  // namespace ventrix::platform
