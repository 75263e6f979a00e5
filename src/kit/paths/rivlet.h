// The host's network-file library, looked up when it is first asked: in the process, then beside the program.
// Where it is absent, a text with the scheme of a network protocol is a network file, and every transfer
// fails. Results are in kit memory, and the caller frees them with Q_Free; on failure they are null. A null
// out-pointer is fatal.
#pragma once

#include <cstdint>

#include "platform/library.h"

namespace ventrix {

/// The library's operations by their names in it; null where it is absent or lacks one. Answers of type int32
/// are 0 on success. Texts that it stores are its own and go back through free.
struct RivletLibrary {
    std::int32_t (*isNetFile)(const char* text);  ///< 0 for a network file.
    std::int32_t (*getAbsoluteUrl)(const char* base, const char* path, char** url);
    std::int32_t (*getRelativeUrl)(const char* base, const char* path, char** url);
    void (*free)(void* text);
    std::int32_t (*open)(const char* url, std::int32_t flags, char** path);
    std::int32_t (*queryCacheForPath)(const char* url, char** path);
    std::int32_t (*queryCacheForUrl)(const char* path, char** url);
    std::int32_t (*getCacheFile)(const char* url, char** path);
    std::int32_t (*save)(const char* url, std::int32_t zero);
    std::int32_t (*put)(const char* url, const char* localFile);
    std::int32_t (*uploadFolder)(const char* url, const char* localFolder);
    std::int32_t (*stat)(const char* url, std::int32_t flags);
    std::int32_t (*cleanUrl)(const char* url, char** cleanUrl);
    std::int32_t (*getLastError)();
};

/// The library's operations, looked up at the first call.
const RivletLibrary& Q_Rivlet();

/// Takes the library from this handle instead; null stands for its absence. Tests put their own in its place.
void Q_BindRivlet(platform::LibraryHandle library);

/// A copy in kit memory of a text that the library stored, which goes back to it. Null for null.
char* Q_TakeRivletText(char* text);

/// Whether the text names a network file. False for null.
bool Q_IsNetFile(const char* text);

/// True for what is no network file, and for null.
bool Q_IsLocalPath(const char* text);

/// Stores the absolute URL of a path seen from a base. 0 on success, else 1 or the library's answer; 1 unless
/// the base is a network file.
std::int32_t Q_AbsoluteUrl(const char* base, const char* path, char** result);

/// Stores the URL of the path relative to the base. 0 on success, else 1 or the library's answer; 1 unless
/// both are network files.
std::int32_t Q_RelativeUrl(const char* base, const char* path, char** result);

}  // namespace ventrix
