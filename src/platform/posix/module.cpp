#include "platform/module.h"

#include <dlfcn.h>
#include <link.h>

#include <filesystem>
#include <system_error>

#include "platform/bound_resources.h"
#include "platform/drives.h"
#include "platform/posix/image_resources.h"
#include "platform/program.h"
#include "platform/wide_text.h"

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

/// The loader's record of a module. The handle is only compared and never dereferenced: it may be any value.
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

/// True if the address lies in the memory of the module.
bool IsAddressInModule(const void* address, ModuleHandle module) {
    const link_map* map = MapOfHandle(module);
    return map != nullptr && map == MapOfAddress(address);
}

const ModuleResources kNoResources = {};

const ModuleResources& ResourcesOf(ModuleHandle module) {
    if (const ModuleResources* bound = BoundResources(module)) {
        return *bound;
    }
    const bool own = &kImageResources != nullptr && IsAddressInModule(&kImageResources, module);
    return own ? kImageResources : kNoResources;
}

}  // namespace

ModuleHandle MainModule() {
    return MainMap();
}

std::string ModuleFileName(ModuleHandle module) {
    const link_map* map = module == nullptr ? MainMap() : MapOfHandle(module);
    if (map == nullptr) {
        return {};
    }
    return ToSystem(map == MainMap() ? ProgramFile() : AbsoluteNative(map->l_name)).value_or("");
}

std::optional<std::string> VersionBlockText(ModuleHandle module, std::string_view languageBlock,
                                            std::string_view key) {
    return VersionTextIn(ResourcesOf(module), languageBlock, key);
}

int LoadWideString(ModuleHandle module, std::uint32_t id, char16_t* buffer, int size) {
    return size <= 0 ? 0 : CopyCut(StringIn(ResourcesOf(module), id), buffer, size);
}

int LoadNarrowString(ModuleHandle module, std::uint32_t id, char* buffer, int size) {
    if (size <= 0) {
        return 0;
    }
    const std::string text = Utf8FromWide(StringIn(ResourcesOf(module), id));
    return CopyCut(CutAtCharacter(text, static_cast<std::size_t>(size - 1)), buffer, size);
}

std::optional<std::string_view> FindNamedResource(ModuleHandle module, std::uint16_t type,
                                                  std::string_view name) {
    return NamedIn(ResourcesOf(module), type, name);
}

}  // namespace ventrix::platform
