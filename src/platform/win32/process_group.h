// The job object that this process and everything that it starts belong to.
#pragma once

#include "platform/win32/system_calls.h"

namespace ventrix::platform {

/// Puts this process into a job that ends everything in it when the process ends, however it ends. Later
/// calls do nothing.
void OwnProcessGroup();

/// Ends every other process of the job.
void EndProcessGroup();

}  // namespace ventrix::platform
