// Moving network files through the host's library: a file is worked on by its local copy in the library's
// cache. 0 is success; otherwise the answer is 1 or the library's. A null text or one that names no network
// file gives 1. Texts that are stored are in kit memory and the caller's; null on failure. A null out-pointer
// for one is fatal. error may be null; where a transfer fails it gets the library's error number, 0 to 19, or
// 21 for any other and without a library.
#pragma once

#include <cstdint>

namespace ventrix {

constexpr std::int32_t kFetchToRead = 0;
constexpr std::int32_t kFetchToWrite = 16;
constexpr std::int32_t kOtherNetError = 21;

/// Fetches the file and stores the path of its local copy. If that fails, a copy that the cache has already
/// serves, with the answer 0; error tells of the failed transfer all the same.
std::int32_t Q_FetchNetFile(const char* url, std::int32_t flags, char** path, std::int32_t* error);

/// Stores the path of the copy that the cache has already.
std::int32_t Q_CachedPathOf(const char* url, char** path);

/// Stores the URL of a local file that is a cached copy. Takes any text but null.
std::int32_t Q_UrlOfCachedFile(const char* path, char** url);

/// Stores the path that stands for the URL in the cache, also when no copy is there yet.
std::int32_t Q_CachePathFor(const char* url, char** path);

/// Writes the cached copy back to its server.
std::int32_t Q_SaveNetFile(const char* url, std::int32_t* error);

/// Sends a local file to the URL.
std::int32_t Q_PutNetFile(const char* url, const char* localFile, std::int32_t* error);

/// Sends a local folder to the URL.
std::int32_t Q_UploadNetFolder(const char* url, const char* localFolder, std::int32_t* error);

/// Tells whether the file can be reached; flags as for Q_FetchNetFile.
std::int32_t Q_StatNetFile(const char* url, std::int32_t flags, std::int32_t* error);

/// Stores the URL in clean form.
std::int32_t Q_CleanUrl(const char* url, char** cleanUrl);

}  // namespace ventrix
