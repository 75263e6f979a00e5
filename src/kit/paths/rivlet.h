// The host's network-file library, looked up at the first call: in the process, then in the folder of the
// program. Without it, a string with the scheme of a network protocol counts as a network file, and every
// transfer fails. Results are in kit memory, owned by the caller; on failure they are null. A null pointer to
// a result is fatal.
#pragma once

#include <cstdint>

#include "platform/library.h"

namespace ventrix {

/// The library's operations; null for those that it lacks, and for all if it is absent. Results of type int32
/// are 0 on success. The library owns the strings that it stores; they are freed with `free`.
struct RivletLibrary {
    std::int32_t (*isNetFile)(const char* text);  ///< 0 if the string names a network file.
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

/// Uses the library of this handle from now on; null means that there is none.
void Q_BindRivlet(platform::LibraryHandle library);

/// Copies a string that the library stored into kit memory and frees the original. Null for null.
char* Q_TakeRivletText(char* text);

/// Whether the string names a network file. False for null.
bool Q_IsNetFile(const char* text);

/// The opposite of Q_IsNetFile; true for null.
bool Q_IsLocalPath(const char* text);

/// Stores the absolute URL of a path relative to a base. 0 on success, else 1 or the library's result; 1 if
/// the base is not a network file or the library stores no URL.
std::int32_t Q_AbsoluteUrl(const char* base, const char* path, char** result);

/// Stores the URL of the path relative to the base. 0 on success, else 1 or the library's result; 1 if one of
/// them is not a network file or the library stores no URL.
std::int32_t Q_RelativeUrl(const char* base, const char* path, char** result);

}  // namespace ventrix
