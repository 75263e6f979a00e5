// Transfer of network files through the host's library (rivlet.h), which keeps a local copy of each file in
// its cache. Every operation returns 0 on success, else 1 or the library's result; a string that is null or
// does not name a network file gives 1, and so does a success of the library without a string. Strings that
// an operation stores are in kit memory and owned by the caller; on failure they are null. A null pointer to
// such a string is fatal. `error` may be null; if a transfer fails, it receives the library's error number, 0
// to 19, or 21 for any other number and if there is no library.
#pragma once

#include <cstdint>

namespace ventrix {

constexpr std::int32_t kFetchToRead = 0;
constexpr std::int32_t kFetchToWrite = 16;
constexpr std::int32_t kOtherNetError = 21;

/// Fetches the file and stores the path of its local copy. If that fails but the cache already has a copy,
/// stores the path of that copy and returns 0; `error` still receives the number of the failed transfer.
std::int32_t Q_FetchNetFile(const char* url, std::int32_t flags, char** path, std::int32_t* error);

/// Stores the path of the copy in the cache; fails if there is none.
std::int32_t Q_CachedPathOf(const char* url, char** path);

/// Stores the URL of a local file that is a copy in the cache. Takes any string except null.
std::int32_t Q_UrlOfCachedFile(const char* path, char** url);

/// Stores the path that belongs to the URL in the cache, even if there is no copy yet.
std::int32_t Q_CachePathFor(const char* url, char** path);

/// Sends the copy in the cache back to its server.
std::int32_t Q_SaveNetFile(const char* url, std::int32_t* error);

/// Sends a local file to the URL.
std::int32_t Q_PutNetFile(const char* url, const char* localFile, std::int32_t* error);

/// Sends a local folder to the URL.
std::int32_t Q_UploadNetFolder(const char* url, const char* localFolder, std::int32_t* error);

/// 0 if the file can be reached; flags as for Q_FetchNetFile.
std::int32_t Q_StatNetFile(const char* url, std::int32_t flags, std::int32_t* error);

/// Stores the URL in clean form.
std::int32_t Q_CleanUrl(const char* url, char** cleanUrl);

}  // namespace ventrix
