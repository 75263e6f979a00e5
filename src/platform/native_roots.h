// The roots of native paths (drives.h), and what differs between the platforms in the names of files.
#pragma once

#include <cstddef>
#include <string_view>

namespace ventrix::platform {

/// The length of the root of an absolute native path with its closing slash: of "/", on Windows also of "C:/"
/// and "//server/". 0 for a relative path.
std::size_t NativeRootLength(std::string_view nativePath);

/// Whether the system has drives of its own, so that none can be mapped.
bool SystemHasDrives();

/// How many UTF-16 units a native path may have where the standard library opens it; 0 if it has no limit.
std::size_t NativePathLimit();

/// What separates the paths of a list in one argument.
char PathListSeparator();

/// The environment variable that names the folder for temporary files.
std::string_view TemporaryFolderVariable();

/// The suffixes of programs, of libraries, and of the start scripts that come with Java programs; empty for
/// none.
std::string_view ProgramSuffix();
std::string_view LibrarySuffix();
std::string_view StartScriptSuffix();

}  // namespace ventrix::platform
