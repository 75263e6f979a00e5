// Libraries that are found while the process runs. A library stays loaded until the process ends.
#pragma once

#include <string_view>

namespace ventrix::platform {

using LibraryHandle = void*;

/// The process as it stands: FindSymbol then looks through the program and everything that it has loaded for
/// all.
LibraryHandle ProcessLibrary();

/// Loads a library by its name or path (system notation). Null if there is none. For "ole32.dll", in any case
/// of letters, this room answers itself.
LibraryHandle OpenLibrary(std::string_view name);

/// Loads the library `name` (no folder, no suffix) from the folder of the process's main program. Null if
/// there is none.
LibraryHandle OpenLibraryBesideProgram(std::string_view name);

/// The address of a function or datum. Null for a null handle, an unknown name or a null name.
void* FindSymbol(LibraryHandle library, const char* name);

/// The same as a pointer to a function: auto save = FindFunction<int(const char*, int)>(library,
/// "RivletSave").
template <typename Function>
Function* FindFunction(LibraryHandle library, const char* name) {
    return reinterpret_cast<Function*>(FindSymbol(library, name));
}

}  // namespace ventrix::platform
