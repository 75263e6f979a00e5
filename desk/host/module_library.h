// Finds the one entry of a client module's library.
#pragma once

#include <string>

#include "bridge/contract/host_interfaces.h"

namespace ventrix::desk {

struct ModuleLibrary {
    void* handle = nullptr;            ///< What the entry gets as its module handle; never closed.
    ClientInitEntry* entry = nullptr;  ///< Null if the library could not be used.
    std::string problem;               ///< One line that says why; empty on success.
};

/// Loads the library at this native path and looks up its entry.
ModuleLibrary LoadModuleLibrary(const std::string& nativePath);

}  // namespace ventrix::desk
