#include "platform/library.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/drives.h"
#include "platform/program.h"
#include "platform/win32/system_calls.h"

#include <psapi.h>

namespace ventrix::platform {
namespace {

/// Its address is the handle of the whole process, which the system does not have.
char processMark;

void* AddressOf(::HMODULE module, const char* name) {
    return reinterpret_cast<void*>(::GetProcAddress(module, name));
}

void* FindInProcess(const char* name) {
    std::array<::HMODULE, 1024> modules = {};
    ::DWORD size = 0;
    if (::EnumProcessModules(::GetCurrentProcess(), modules.data(), sizeof modules, &size) == 0) {
        return nullptr;
    }
    const std::size_t count = std::min(modules.size(), std::size_t{size} / sizeof(::HMODULE));
    for (std::size_t i = 0; i < count; ++i) {
        if (void* address = AddressOf(modules[i], name)) {
            return address;
        }
    }
    return nullptr;
}

/// The names of the libraries that a library needs, in its own order; empty if it cannot be read.
std::vector<std::string> NeededLibraries(const std::wstring& path) {
    const ::HMODULE mapped = ::LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    if (mapped == nullptr) {
        return {};
    }
    // The lowest two bits of such a handle say how the file is mapped, the others are its address.
    const auto address = reinterpret_cast<std::uintptr_t>(mapped) & ~std::uintptr_t{3};
    const auto* dosHeader = reinterpret_cast<const IMAGE_DOS_HEADER*>(address);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(address + dosHeader->e_lfanew);
    const ::DWORD imports =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    std::vector<std::string> names;
    const auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(address + imports);
    for (; imports != 0 && import->Name != 0; ++import) {
        names.emplace_back(reinterpret_cast<const char*>(address + import->Name));
    }
    ::FreeLibrary(mapped);
    return names;
}

bool IsLibrary(const std::wstring& nameOrPath) {
    const ::HMODULE found = ::LoadLibraryExW(nameOrPath.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    return found != nullptr && ::FreeLibrary(found) != 0;
}

/// The first library that this one needs and that is neither beside it nor where the system searches. Empty
/// if there is none: one of those libraries may itself need a missing one.
std::string MissingLibrary(const std::wstring& path) {
    const std::wstring folder = path.substr(0, path.rfind(L'\\') + 1);
    for (const std::string& name : NeededLibraries(path)) {
        if (!IsLibrary(folder + Wide(name)) && !IsLibrary(Wide(name))) {
            return name;
        }
    }
    return {};
}

/// The loader gives a number only.
std::string ReasonOf(DWORD error, const std::wstring& path) {
    if (error == ERROR_MOD_NOT_FOUND) {
        const std::string missing = MissingLibrary(path);
        return "a library that it needs is missing" + (missing.empty() ? "" : ": " + missing) +
               " (error 126)";
    }
    if (error == ERROR_PROC_NOT_FOUND) {
        return "a library that it needs is of another version (error 127)";
    }
    if (error == ERROR_BAD_EXE_FORMAT) {
        return "it is not a library for this processor (error 193)";
    }
    return std::system_category().message(static_cast<int>(error)) + " (error " + std::to_string(error) + ")";
}

}  // namespace

LibraryHandle ProcessLibrary() {
    return &processMark;
}

LibraryHandle OpenLibrary(std::string_view name) {
    return name.empty() ? nullptr : ::LoadLibraryW(CallPath(ToNative(name)).c_str());
}

LibraryHandle OpenLibraryFile(const std::string& file, std::string& problem) {
    // The libraries that it needs are searched for beside it first.
    const std::wstring path = CallPath(file);
    LibraryHandle library = ::LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    problem = library == nullptr ? ReasonOf(::GetLastError(), path) : std::string();
    return library;
}

LibraryHandle OpenLibraryBesideProgram(std::string_view name) {
    const std::string program = ProgramFile();
    const std::string folder = program.substr(0, program.rfind('/') + 1);
    return ::LoadLibraryW(CallPath(folder + std::string(name) + ".dll").c_str());
}

void* FindSymbol(LibraryHandle library, const char* name) {
    if (library == nullptr || name == nullptr) {
        return nullptr;
    }
    return library == &processMark ? FindInProcess(name) : AddressOf(static_cast<::HMODULE>(library), name);
}

}  // namespace ventrix::platform
