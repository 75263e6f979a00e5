#include "platform/module.h"

#include <vector>

#include "platform/bound_resources.h"
#include "platform/drives.h"
#include "platform/wide_text.h"
#include "platform/win32/system_calls.h"

namespace ventrix::platform {
namespace {

/// The system's module for a handle, which is any address in it. Null if there is none.
::HMODULE ModuleOf(ModuleHandle module) {
    ::HMODULE found = nullptr;
    ::GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        static_cast<const wchar_t*>(module), &found);
    return module == nullptr ? nullptr : found;
}

std::optional<std::string_view> ResourceBytes(::HMODULE module, const wchar_t* type, const wchar_t* name) {
    const ::HRSRC found = module == nullptr ? nullptr : ::FindResourceW(module, name, type);
    const ::HGLOBAL loaded = found == nullptr ? nullptr : ::LoadResource(module, found);
    if (loaded == nullptr) {
        return std::nullopt;
    }
    return std::string_view(static_cast<const char*>(::LockResource(loaded)),
                            ::SizeofResource(module, found));
}

/// The string's place in the string table, not copied.
std::u16string_view TableString(ModuleHandle module, std::uint32_t id) {
    if (const ModuleResources* bound = BoundResources(module)) {
        return StringIn(*bound, id);
    }
    const ::HMODULE found = ModuleOf(module);
    const wchar_t* text = nullptr;
    const int length = found == nullptr ? 0 : ::LoadStringW(found, id, reinterpret_cast<wchar_t*>(&text), 0);
    return {reinterpret_cast<const char16_t*>(text), static_cast<std::size_t>(length)};
}

/// The start of a text, cut to what the system's 8-bit encoding has room for in `limit` bytes.
std::string NarrowCut(std::u16string_view text, std::size_t limit) {
    for (std::size_t units = text.size();; --units) {
        const bool splitsPair = units > 0 && units < text.size() && (text[units - 1] & 0xFC00) == 0xD800;
        const auto* wide = reinterpret_cast<const wchar_t*>(text.data());
        std::string narrow(units * 4, '\0');
        const int size = units == 0 || splitsPair
                             ? 0
                             : ::WideCharToMultiByte(CP_ACP, 0, wide, static_cast<int>(units), narrow.data(),
                                                     static_cast<int>(narrow.size()), nullptr, nullptr);
        if (!splitsPair && static_cast<std::size_t>(size) <= limit) {
            narrow.resize(static_cast<std::size_t>(size));
            return narrow;
        }
    }
}

}  // namespace

ModuleHandle MainModule() {
    return ::GetModuleHandleW(nullptr);
}

std::string ModuleFileName(ModuleHandle module) {
    const ::HMODULE found = module == nullptr ? ::GetModuleHandleW(nullptr) : ModuleOf(module);
    if (found == nullptr) {
        return {};
    }
    // For a path that does not fit, the system cuts it and returns the size of the buffer.
    std::wstring path(MAX_PATH, L'\0');
    ::DWORD length = ::GetModuleFileNameW(found, path.data(), static_cast<DWORD>(path.size()));
    while (length == path.size()) {
        path.resize(2 * path.size());
        length = ::GetModuleFileNameW(found, path.data(), static_cast<DWORD>(path.size()));
    }
    path.resize(length);
    return ToSystem(NativeFromCall(path)).value_or("");
}

std::optional<std::string> VersionBlockText(ModuleHandle module, std::string_view languageBlock,
                                            std::string_view key) {
    if (const ModuleResources* bound = BoundResources(module)) {
        return VersionTextIn(*bound, languageBlock, key);
    }
    const auto bytes = ResourceBytes(ModuleOf(module), MAKEINTRESOURCEW(16), MAKEINTRESOURCEW(1));
    if (!bytes) {
        return std::nullopt;
    }
    // The query works on the block as the system's own call for files delivers it, which is twice as long.
    std::vector<char> block(bytes->begin(), bytes->end());
    block.resize(2 * block.size() + 8);
    const std::wstring path = L"\\StringFileInfo\\" + Wide(languageBlock) + L"\\" + Wide(key);
    void* text = nullptr;
    ::UINT length = 0;
    if (::VerQueryValueW(block.data(), path.c_str(), &text, &length) == 0) {
        return std::nullopt;
    }
    return Narrow(static_cast<const wchar_t*>(text));
}

int LoadWideString(ModuleHandle module, std::uint32_t id, char16_t* buffer, int size) {
    return size <= 0 ? 0 : CopyCut(TableString(module, id), buffer, size);
}

int LoadNarrowString(ModuleHandle module, std::uint32_t id, char* buffer, int size) {
    if (size <= 0) {
        return 0;
    }
    const std::string text = NarrowCut(TableString(module, id), static_cast<std::size_t>(size - 1));
    return CopyCut(std::string_view(text), buffer, size);
}

std::optional<std::string_view> FindNamedResource(ModuleHandle module, std::uint16_t type,
                                                  std::string_view name) {
    if (const ModuleResources* bound = BoundResources(module)) {
        return NamedIn(*bound, type, name);
    }
    return ResourceBytes(ModuleOf(module), MAKEINTRESOURCEW(type), Wide(name).c_str());
}

}  // namespace ventrix::platform
