// A network-file library for the tests, built as a separate library. "net://NAME" is a file in the server
// folder that RivletServe sets together with the cache folder. A null server means that it cannot be reached.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;

std::string serverFolder;
std::string cacheFolder;
std::int32_t lastError = 0;
int openTexts = 0;

constexpr char kScheme[] = "net://";

std::string NameOf(const char* url) {
    return std::string(url).substr(sizeof kScheme - 1);
}

std::int32_t Store(const std::string& text, char** out) {
    *out = strdup(text.c_str());
    ++openTexts;
    return 0;
}

/// Success without a string, which the library gives for a file "null...", except from its cache.
bool IsNull(const char* text) {
    return std::strstr(text, "null") != nullptr;
}

std::int32_t StoreNull(char** out) {
    *out = nullptr;
    return 0;
}

std::int32_t Fail(std::int32_t error) {
    lastError = error;
    return 5;
}

std::int32_t CopyFile(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, error);
    return error ? Fail(3) : 0;
}

std::int32_t CopyToServer(const fs::path& from, const char* url) {
    return serverFolder.empty() ? Fail(99) : CopyFile(from, fs::path(serverFolder) / NameOf(url));
}

fs::path CacheOf(const char* url) {
    return fs::path(cacheFolder) / NameOf(url);
}

}  // namespace

#define RIVLET extern "C" __attribute__((visibility("default")))

RIVLET void RivletServe(const char* server, const char* cache) {
    serverFolder = server == nullptr ? "" : server;
    cacheFolder = cache;
}

RIVLET int RivletOpenTexts() {
    return openTexts;
}

RIVLET std::int32_t RivletIsNetFile(const char* text) {
    return std::string(text).rfind(kScheme, 0) == 0 ? 0 : 1;
}

RIVLET void RivletFree(void* text) {
    --openTexts;
    std::free(text);
}

RIVLET std::int32_t RivletOpen(const char* url, std::int32_t, char** path) {
    if (IsNull(url)) {
        return StoreNull(path);
    }
    if (serverFolder.empty()) {
        return Fail(7);
    }
    const std::int32_t answer = CopyFile(fs::path(serverFolder) / NameOf(url), CacheOf(url));
    return answer == 0 ? Store(CacheOf(url).generic_string(), path) : answer;
}

RIVLET std::int32_t RivletQueryCacheForPath(const char* url, char** path) {
    return fs::exists(CacheOf(url)) ? Store(CacheOf(url).generic_string(), path) : 1;
}

RIVLET std::int32_t RivletQueryCacheForURL(const char* path, char** url) {
    const std::string prefix = cacheFolder + "/";
    const std::string text = path;
    return text.rfind(prefix, 0) == 0 ? Store(kScheme + text.substr(prefix.size()), url) : 1;
}

RIVLET std::int32_t RivletGetCacheFile(const char* url, char** path) {
    return cacheFolder.empty() ? 1 : Store(CacheOf(url).generic_string(), path);
}

RIVLET std::int32_t RivletSave(const char* url, std::int32_t) {
    return CopyToServer(CacheOf(url), url);
}

RIVLET std::int32_t RivletPut(const char* url, const char* file) {
    return CopyToServer(file, url);
}

RIVLET std::int32_t RivletUploadFolder(const char* url, const char* folder) {
    std::error_code error;
    fs::copy(folder, fs::path(serverFolder) / NameOf(url), fs::copy_options::recursive, error);
    return error ? Fail(19) : 0;
}

RIVLET std::int32_t RivletStat(const char* url, std::int32_t) {
    return fs::exists(fs::path(serverFolder) / NameOf(url)) ? 0 : Fail(20);
}

RIVLET std::int32_t RivletCleanURL(const char* url, char** clean) {
    return IsNull(url) ? StoreNull(clean)
                       : Store(kScheme + fs::path(NameOf(url)).lexically_normal().string(), clean);
}

RIVLET std::int32_t RivletGetAbsoluteURL(const char* base, const char* path, char** url) {
    if (IsNull(path)) {
        return StoreNull(url);
    }
    return std::strchr(path, '?') == nullptr ? Store(std::string(base) + path, url) : 1;
}

// Relative to the folder of the base; a file of another host stays a URL.
RIVLET std::int32_t RivletGetRelativeURL(const char* base, const char* path, char** url) {
    if (IsNull(path)) {
        return StoreNull(url);
    }
    const fs::path folder = fs::path(NameOf(base)).parent_path();
    const fs::path target = NameOf(path);
    if (*folder.begin() != *target.begin()) {
        return Store(path, url);
    }
    return folder.empty() ? 1 : Store(target.lexically_relative(folder).string(), url);
}

RIVLET std::int32_t RivletGetLastError() {
    return lastError;
}
