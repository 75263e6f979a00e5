// What belongs to a loaded module (a library or the program): its file name, version block, string table and
// named resources. A module handle is the handle of the dynamic loader, or any address inside the module.
// Nothing here owns a handle. Strings are UTF-8 unless their type is UTF-16.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ventrix::platform {

using ModuleHandle = void*;

/// The main program of the process.
ModuleHandle MainModule();

/// The module's file in system notation; with a null handle, that of the main program. Empty if the handle is
/// not a module, or if the path has no system notation.
std::string ModuleFileName(ModuleHandle module);

struct StringResource {
    std::uint16_t id;
    std::u16string_view text;
};

struct VersionString {
    std::string_view languageBlock;  ///< Eight hexadecimal digits, "040904b0".
    std::string_view key;
    std::string_view value;
};

struct NamedResource {
    std::uint16_t type;
    std::string_view name;
    std::string_view bytes;
};

/// The resources of one module. ventrix_add_resources (resources/CMakeLists.txt) compiles them into it; a
/// module without them has no resources.
struct ModuleResources {
    std::span<const StringResource> strings;
    std::span<const VersionString> version;
    std::span<const NamedResource> named;
};

/// Sets the resources of a handle, which need not be a module's; null removes them again. The table is not
/// copied and must exist until then.
void BindResources(ModuleHandle module, const ModuleResources* resources);

/// A string of the version block by language block and key, both compared without regard to case. Nothing if
/// there is no such key or no version block; a null handle has none.
std::optional<std::string> VersionBlockText(ModuleHandle module, std::string_view languageBlock,
                                            std::string_view key);

/// Copies a string of the string table, cut to `size` units including the terminator, and returns the units
/// copied without the terminator. An unknown id gives 0 and the empty string. With a size of 0 or less
/// nothing is written.
int LoadWideString(ModuleHandle module, std::uint32_t id, char16_t* buffer, int size);

/// The same in the platform's 8-bit encoding, UTF-8 where it has no other; never cut inside a character.
int LoadNarrowString(ModuleHandle module, std::uint32_t id, char* buffer, int size);

/// The bytes of a named resource by type and name; names are compared without regard to case. The bytes are
/// valid as long as the module is loaded.
std::optional<std::string_view> FindNamedResource(ModuleHandle module, std::uint16_t type,
                                                  std::string_view name);

}  // namespace ventrix::platform
