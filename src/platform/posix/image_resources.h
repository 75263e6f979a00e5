// The resource table that is compiled into this very module or program; each has its own or none.
#pragma once

#include "platform/module.h"

namespace ventrix::platform {

/// Without a definition in the image its address is null.
[[gnu::weak, gnu::visibility("hidden")]] extern const ModuleResources kImageResources;

/// True if the handle stands for the module in whose memory the address lies.
bool IsAddressInModule(const void* address, ModuleHandle module);

}  // namespace ventrix::platform
