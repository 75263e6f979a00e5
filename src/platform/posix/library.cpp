#include "platform/library.h"

#include <dlfcn.h>
#include <strings.h>

#include <cstring>
#include <string>

#include "platform/drives.h"
#include "platform/posix/activation.h"
#include "platform/posix/native_paths.h"
#include "platform/program.h"

namespace ventrix::platform {
namespace {

constexpr char kComponentLibrary[] = "ole32.dll";

/// Its address is the handle of the component runtime, which is part of this program.
char componentLibraryMark;

bool IsComponentLibrary(std::string_view name) {
    return name.size() == std::strlen(kComponentLibrary) &&
           ::strncasecmp(name.data(), kComponentLibrary, name.size()) == 0;
}

void* FindComponentFunction(const char* name) {
    const bool known = std::strcmp(name, "CoCreateInstanceEx") == 0;
    return known ? reinterpret_cast<void*>(&CreateInstanceOnServer) : nullptr;
}

LibraryHandle OpenNative(const std::string& path) {
    return ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

}  // namespace

LibraryHandle ProcessLibrary() {
    return ::dlopen(nullptr, RTLD_NOW);
}

LibraryHandle OpenLibrary(std::string_view name) {
    if (name.empty()) {
        return nullptr;
    }
    return IsComponentLibrary(name) ? &componentLibraryMark : OpenNative(ToNative(name));
}

LibraryHandle OpenLibraryFile(const std::string& file, std::string& problem) {
    LibraryHandle library = OpenNative(file);
    const char* reason = library == nullptr ? ::dlerror() : "";
    problem = reason == nullptr ? "unknown reason" : reason;
    return library;
}

LibraryHandle OpenLibraryBesideProgram(std::string_view name) {
    return OpenNative(NativeParent(ProgramFile()) + "/" + std::string(name) + ".so");
}

void* FindSymbol(LibraryHandle library, const char* name) {
    if (library == nullptr || name == nullptr) {
        return nullptr;
    }
    return library == &componentLibraryMark ? FindComponentFunction(name) : ::dlsym(library, name);
}

}  // namespace ventrix::platform
