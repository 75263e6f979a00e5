// The resources that BindResources (module.h) has set, and what all backends do with the strings of
// resources.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "platform/module.h"

namespace ventrix::platform {

/// Null if none are set for the handle.
const ModuleResources* BoundResources(ModuleHandle module);

std::u16string_view StringIn(const ModuleResources& resources, std::uint32_t id);
std::optional<std::string> VersionTextIn(const ModuleResources& resources, std::string_view languageBlock,
                                         std::string_view key);
std::optional<std::string_view> NamedIn(const ModuleResources& resources, std::uint16_t type,
                                        std::string_view name);

/// Copies as much as fits with a terminator into a buffer of at least one unit. Returns the units copied.
template <typename Unit>
int CopyCut(std::basic_string_view<Unit> text, Unit* buffer, int size) {
    const std::size_t count = std::min(text.size(), static_cast<std::size_t>(size - 1));
    std::copy_n(text.data(), count, buffer);
    buffer[count] = 0;
    return static_cast<int>(count);
}

/// The start of UTF-8 text, cut to the limit in bytes but not inside a character.
std::string_view CutAtCharacter(std::string_view text, std::size_t limit);

}  // namespace ventrix::platform
