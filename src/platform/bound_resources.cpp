#include "platform/bound_resources.h"

#include <map>

namespace ventrix::platform {
namespace {

std::map<ModuleHandle, const ModuleResources*>& Table() {
    static std::map<ModuleHandle, const ModuleResources*> table;
    return table;
}

char LowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerAscii(x) == LowerAscii(y); });
}

bool IsContinuation(char byte) {
    return (byte & 0xC0) == 0x80;
}

}  // namespace

void BindResources(ModuleHandle module, const ModuleResources* resources) {
    if (resources == nullptr) {
        Table().erase(module);
    } else {
        Table()[module] = resources;
    }
}

const ModuleResources* BoundResources(ModuleHandle module) {
    const auto bound = Table().find(module);
    return bound == Table().end() ? nullptr : bound->second;
}

std::u16string_view StringIn(const ModuleResources& resources, std::uint32_t id) {
    for (const StringResource& string : resources.strings) {
        if (string.id == id) {
            return string.text;
        }
    }
    return {};
}

std::optional<std::string> VersionTextIn(const ModuleResources& resources, std::string_view languageBlock,
                                         std::string_view key) {
    for (const VersionString& entry : resources.version) {
        if (EqualIgnoringCase(entry.languageBlock, languageBlock) && EqualIgnoringCase(entry.key, key)) {
            return std::string(entry.value);
        }
    }
    return std::nullopt;
}

std::optional<std::string_view> NamedIn(const ModuleResources& resources, std::uint16_t type,
                                        std::string_view name) {
    for (const NamedResource& resource : resources.named) {
        if (resource.type == type && EqualIgnoringCase(resource.name, name)) {
            return resource.bytes;
        }
    }
    return std::nullopt;
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

}  // namespace ventrix::platform
