// Finds the one entry of a client module's library.
#pragma once

#include <string>

#include "bridge/contract/host_interfaces.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

struct ModuleLibrary {
    void* handle = nullptr;            ///< What the entry gets as its module handle; never closed.
    ClientInitEntry* entry = nullptr;  ///< Null if the library could not be used.
    std::string problem;               ///< One line that says why; empty on success.
};

/// Loads the library and looks up its entry.
ModuleLibrary LoadModuleLibrary(const NativePath& path);

}  // namespace ventrix::desk
