// The processes below one process, found through /proc.
#pragma once

#include <sys/types.h>

#include <vector>

namespace ventrix::platform {

/// The running processes whose ancestor `root` is, without the calling process. Ended ones that nobody has
/// waited for do not count. Empty where /proc is missing.
std::vector<pid_t> RunningDescendants(pid_t root);

/// Ends them with SIGTERM, and after a second with SIGKILL. Returns when none is left, or after ten seconds
/// if the system cannot end one.
void EndDescendants(pid_t root);

}  // namespace ventrix::platform
