#include "desk/host/module_library.h"

#include <filesystem>

#include "platform/library.h"

namespace ventrix::desk {
ModuleLibrary LoadModuleLibrary(const NativePath& path) {
    ModuleLibrary library;
    std::error_code ignored;
    if (!std::filesystem::exists(ToFilesystem(path), ignored)) {
        library.problem = "the module is missing: " + path.utf8;
        return library;
    }
    std::string reason;
    library.handle = platform::OpenLibraryFile(path.utf8, reason);
    if (library.handle == nullptr) {
        library.problem = "the module cannot be loaded: " + reason;
        return library;
    }
    library.entry = platform::FindFunction<ClientInitEntry>(library.handle, kClientInitEntryName);
    if (library.entry == nullptr) {
        library.problem = "the module has no export " + std::string(kClientInitEntryName) + ": " + path.utf8;
    }
    return library;
}

}  // namespace ventrix::desk
