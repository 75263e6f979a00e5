// Loads the library of a client module and finds its entry point.
#pragma once

#include <string>

#include "bridge/contract/host_interfaces.h"

namespace ventrix::desk {

struct ModuleLibrary {
    void* handle = nullptr;  ///< The module handle for the entry point. The library is never unloaded.
    ClientInitEntry* entry = nullptr;  ///< Null if the library cannot be used.
    std::string problem;               ///< One line that says why it cannot be used; empty on success.
};

/// Loads the library at this native path and looks up its entry point.
ModuleLibrary LoadModuleLibrary(const std::string& nativePath);

}  // namespace ventrix::desk
