// What a loaded module (library or program) carries: its file name, version block, string table and named
// resources. A module handle is what the loader of the library holds, or any address inside the module.
// Whoever loads a module passes the handle; nothing here owns it. All texts are UTF-8 unless their type says
// UTF-16.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ventrix::platform {

using ModuleHandle = void*;

/// The process's main program.
ModuleHandle MainModule();

/// The module in whose memory the address lies; null if there is none.
ModuleHandle ModuleOfAddress(const void* address);

/// The module's file in system notation. A null handle stands for the main program. Empty for a handle that
/// is no module's, or if system notation cannot tell the path.
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

/// The resources of one module, compiled into it by ventrix_add_resources (resources/CMakeLists.txt). A
/// module that links no table has no resources.
struct ModuleResources {
    std::span<const StringResource> strings;
    std::span<const VersionString> version;
    std::span<const NamedResource> named;
};

/// Gives a handle resources of its own, whatever it stands for; a null table takes them away again. For tests
/// and for programs that play a module. The table stays the caller's and must last.
void BindResources(ModuleHandle module, const ModuleResources* resources);

/// A text of the version block, by language block and key; the key without regard to case. Nothing if the
/// module has no version block or no such key. A null handle has none.
std::optional<std::string> VersionBlockText(ModuleHandle module, std::string_view languageBlock,
                                            std::string_view key);

/// Copies a string of the string table, cut to `size` units with its terminator. Gives the units copied
/// without the terminator; 0 for an unknown id, which leaves an empty text. With a size of 0 or less nothing
/// is written.
int LoadWideString(ModuleHandle module, std::uint32_t id, char16_t* buffer, int size);

/// The same in the platform's 8-bit encoding (UTF-8 where it has no other), never cut inside a character.
int LoadNarrowString(ModuleHandle module, std::uint32_t id, char* buffer, int size);

/// The bytes of a resource by type and name, without regard to the name's case. They live as long as the
/// module.
std::optional<std::string_view> FindNamedResource(ModuleHandle module, std::uint16_t type,
                                                  std::string_view name);

}  // namespace ventrix::platform
