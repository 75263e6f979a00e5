#include "desk/host/module_library.h"

#include <dlfcn.h>

#include <filesystem>

namespace ventrix::desk {
namespace {

std::string LoaderReason() {
    const char* reason = dlerror();
    return reason == nullptr ? "unknown reason" : reason;
}

}  // namespace

ModuleLibrary LoadModuleLibrary(const std::string& nativePath) {
    ModuleLibrary library;
    std::error_code ignored;
    if (!std::filesystem::exists(nativePath, ignored)) {
        library.problem = "the module is missing: " + nativePath;
        return library;
    }
    library.handle = dlopen(nativePath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library.handle == nullptr) {
        library.problem = "the module cannot be loaded: " + LoaderReason();
        return library;
    }
    library.entry = reinterpret_cast<ClientInitEntry*>(dlsym(library.handle, kClientInitEntryName));
    if (library.entry == nullptr) {
        library.problem = "the module has no export " + std::string(kClientInitEntryName) + ": " + nativePath;
    }
    return library;
}

}  // namespace ventrix::desk
