// Libraries that are loaded at run time. They stay loaded until the process ends.
#pragma once

#include <string>
#include <string_view>

namespace ventrix::platform {

using LibraryHandle = void*;

/// A handle with which FindSymbol searches the program and the libraries whose symbols are global.
LibraryHandle ProcessLibrary();

/// Loads a library by its name or path (system notation). Null if there is none. "ole32.dll", in any case,
/// gives the platform's own component runtime.
LibraryHandle OpenLibrary(std::string_view name);

/// Loads a library by its native path. Null if that fails; `problem` is then the reason that the loader
/// gives, else empty.
LibraryHandle OpenLibraryFile(const std::string& file, std::string& problem);

/// Loads a library from the folder of the main program; `name` has neither folder nor suffix. Null if there
/// is none.
LibraryHandle OpenLibraryBesideProgram(std::string_view name);

/// The address of a function or object. Null for an unknown name, a null name and a null handle.
void* FindSymbol(LibraryHandle library, const char* name);

/// The same as a function pointer: FindFunction<int(const char*, int)>(library, "RivletSave").
template <typename Function>
Function* FindFunction(LibraryHandle library, const char* name) {
    return reinterpret_cast<Function*>(FindSymbol(library, name));
}

}  // namespace ventrix::platform
