// Loads the library of a client module and finds its entry point.
#pragma once

#include <string>

#include "bridge/contract/host_interfaces.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

struct ModuleLibrary {
    void* handle = nullptr;  ///< The module handle for the entry point. The library is never unloaded.
    ClientInitEntry* entry = nullptr;  ///< Null if the library cannot be used.
    std::string problem;               ///< One line that says why it cannot be used; empty on success.
};

/// Loads the library and looks up its entry point.
ModuleLibrary LoadModuleLibrary(const NativePath& path);

}  // namespace ventrix::desk
