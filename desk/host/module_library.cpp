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

ModuleLibrary LoadModuleLibrary(const NativePath& path) {
    ModuleLibrary library;
    std::error_code ignored;
    if (!std::filesystem::exists(ToFilesystem(path), ignored)) {
        library.problem = "the module is missing: " + path.utf8;
        return library;
    }
    library.handle = dlopen(path.utf8.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library.handle == nullptr) {
        library.problem = "the module cannot be loaded: " + LoaderReason();
        return library;
    }
    library.entry = reinterpret_cast<ClientInitEntry*>(dlsym(library.handle, kClientInitEntryName));
    if (library.entry == nullptr) {
        library.problem = "the module has no export " + std::string(kClientInitEntryName) + ": " + path.utf8;
    }
    return library;
}

}  // namespace ventrix::desk
