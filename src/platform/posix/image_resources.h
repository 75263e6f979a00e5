// The resource table of the module or program into which this code is linked. resources/generate.cmake writes
// its definition.
#pragma once

#include "platform/module.h"

namespace ventrix::platform {

/// Weak: its address is null in an image that has no resources.
[[gnu::weak, gnu::visibility("hidden")]] extern const ModuleResources kImageResources;

}  // namespace ventrix::platform
