#include "platform/library.h"

#include <array>

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

std::string MessageOf(DWORD error) {
    if (error == ERROR_MOD_NOT_FOUND) {
        return "a library that it needs is missing (error 126)";
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
    LibraryHandle library = ::LoadLibraryExW(CallPath(file).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    problem = library == nullptr ? MessageOf(::GetLastError()) : std::string();
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
