#include "platform/module.h"

#include <dlfcn.h>
#include <link.h>
#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>

#include "platform/drives.h"
#include "platform/posix/image_resources.h"
#include "platform/posix/native_paths.h"
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

std::map<ModuleHandle, const ModuleResources*>& BoundResources() {
    static std::map<ModuleHandle, const ModuleResources*> bound;
    return bound;
}

const ModuleResources kNoResources = {};

const ModuleResources& ResourcesOf(ModuleHandle module) {
    const auto bound = BoundResources().find(module);
    if (bound != BoundResources().end()) {
        return *bound->second;
    }
    const bool own = &kImageResources != nullptr && IsAddressInModule(&kImageResources, module);
    return own ? kImageResources : kNoResources;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && ::strncasecmp(a.data(), b.data(), a.size()) == 0;
}

std::u16string_view FindString(ModuleHandle module, std::uint32_t id) {
    for (const StringResource& string : ResourcesOf(module).strings) {
        if (string.id == id) {
            return string.text;
        }
    }
    return {};
}

/// Copies as much as fits with a terminator. Returns the units copied.
template <typename Unit>
int CopyCut(std::basic_string_view<Unit> text, Unit* buffer, int size) {
    const std::size_t count = std::min(text.size(), static_cast<std::size_t>(size - 1));
    std::copy_n(text.data(), count, buffer);
    buffer[count] = 0;
    return static_cast<int>(count);
}

bool IsContinuation(char byte) {
    return (byte & 0xC0) == 0x80;
}

std::string_view CutAtCharacter(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) {
        return text;
    }
    while (limit > 0 && IsContinuation(text[limit])) {
        --limit;
    }
    return text.substr(0, limit);
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

void BindResources(ModuleHandle module, const ModuleResources* resources) {
    if (resources == nullptr) {
        BoundResources().erase(module);
    } else {
        BoundResources()[module] = resources;
    }
}

std::optional<std::string> VersionBlockText(ModuleHandle module, std::string_view languageBlock,
                                            std::string_view key) {
    for (const VersionString& entry : ResourcesOf(module).version) {
        if (EqualIgnoringCase(entry.languageBlock, languageBlock) && EqualIgnoringCase(entry.key, key)) {
            return std::string(entry.value);
        }
    }
    return std::nullopt;
}

int LoadWideString(ModuleHandle module, std::uint32_t id, char16_t* buffer, int size) {
    return size <= 0 ? 0 : CopyCut(FindString(module, id), buffer, size);
}

int LoadNarrowString(ModuleHandle module, std::uint32_t id, char* buffer, int size) {
    if (size <= 0) {
        return 0;
    }
    const std::string text = Utf8FromWide(FindString(module, id));
    return CopyCut(CutAtCharacter(text, static_cast<std::size_t>(size - 1)), buffer, size);
}

std::optional<std::string_view> FindNamedResource(ModuleHandle module, std::uint16_t type,
                                                  std::string_view name) {
    for (const NamedResource& resource : ResourcesOf(module).named) {
        if (resource.type == type && EqualIgnoringCase(resource.name, name)) {
            return resource.bytes;
        }
    }
    return std::nullopt;
}

}  // namespace ventrix::platform
