#include "platform/module.h"

#include <dlfcn.h>
#include <link.h>

#include <filesystem>
#include <system_error>

#include "platform/drives.h"
#include "platform/posix/image_resources.h"
#include "platform/posix/native_paths.h"

namespace ventrix::platform {
namespace {

link_map* MainMap() {
    static auto* const map = static_cast<link_map*>(::dlopen(nullptr, RTLD_NOW));
    return map;
}

link_map* MapOfAddress(const void* address) {
    Dl_info info = {};
    void* map = nullptr;
    return ::dladdr1(address, &info, &map, RTLD_DL_LINKMAP) == 0 ? nullptr : static_cast<link_map*>(map);
}

/// The loader's record of a module. A handle is compared and never read, since a caller may pass any value.
link_map* MapOfHandle(ModuleHandle module) {
    for (link_map* map = MainMap(); map != nullptr; map = map->l_next) {
        if (map == module) {
            return map;
        }
    }
    return MapOfAddress(module);
}

std::string AbsoluteNative(const char* path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return error ? path : absolute.lexically_normal().string();
}

}  // namespace

ModuleHandle MainModule() {
    return MainMap();
}

ModuleHandle ModuleOfAddress(const void* address) {
    return MapOfAddress(address);
}

std::string ModuleFileName(ModuleHandle module) {
    const link_map* map = module == nullptr ? MainMap() : MapOfHandle(module);
    if (map == nullptr) {
        return {};
    }
    return ToSystem(map == MainMap() ? ProgramFile() : AbsoluteNative(map->l_name)).value_or("");
}

bool IsAddressInModule(const void* address, ModuleHandle module) {
    const link_map* map = MapOfHandle(module);
    return map != nullptr && map == MapOfAddress(address);
}

}  // namespace ventrix::platform
