#include "kit/paths/rivlet.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <type_traits>

#include "kit/text/strings.h"

namespace ventrix {
namespace {

std::optional<RivletLibrary> bound;

// Schemes of the protocols that transfer files.
constexpr const char* kNetworkSchemes[] = {"http", "https", "ftp",    "ftps",   "sftp",
                                           "dav",  "davs",  "webdav", "webdavs"};

RivletLibrary Load(platform::LibraryHandle library) {
    RivletLibrary operations{};
    const auto find = [library](auto& operation, const char* name) {
        operation = reinterpret_cast<std::remove_reference_t<decltype(operation)>>(
            platform::FindSymbol(library, name));
    };
    find(operations.isNetFile, "RivletIsNetFile");
    find(operations.getAbsoluteUrl, "RivletGetAbsoluteURL");
    find(operations.getRelativeUrl, "RivletGetRelativeURL");
    find(operations.free, "RivletFree");
    find(operations.open, "RivletOpen");
    find(operations.queryCacheForPath, "RivletQueryCacheForPath");
    find(operations.queryCacheForUrl, "RivletQueryCacheForURL");
    find(operations.getCacheFile, "RivletGetCacheFile");
    find(operations.save, "RivletSave");
    find(operations.put, "RivletPut");
    find(operations.uploadFolder, "RivletUploadFolder");
    find(operations.stat, "RivletStat");
    find(operations.cleanUrl, "RivletCleanURL");
    find(operations.getLastError, "RivletGetLastError");
    return operations;
}

RivletLibrary LookUp() {
    const RivletLibrary loaded = Load(platform::ProcessLibrary());
    return loaded.isNetFile != nullptr ? loaded : Load(platform::OpenLibraryBesideProgram("Rivlet"));
}

// Whether the text begins with the scheme, in any case, followed by "://".
bool HasScheme(const char* text, const char* scheme) {
    const std::uint32_t length = Q_StrLen(scheme);
    if (!Q_StrPrefix(text + std::min(length, Q_StrLen(text)), "://")) {
        return false;
    }
    return Q_StrIEqual(std::string(text, length).c_str(), scheme);
}

bool HasNetworkScheme(const char* text) {
    return std::any_of(std::begin(kNetworkSchemes), std::end(kNetworkSchemes),
                       [text](const char* scheme) { return HasScheme(text, scheme); });
}

using UrlOperation = std::int32_t(const char* base, const char* path, char** url);

// Runs an operation that stores a string, and stores a copy in kit memory in its place.
std::int32_t AskForUrl(UrlOperation* operation, bool isAllowed, const char* base, const char* path,
                       char** result) {
    if (result == nullptr) {
        Q_Fatal();
    }
    *result = nullptr;
    if (operation == nullptr || !isAllowed) {
        return 1;
    }
    char* url = nullptr;
    const std::int32_t answer = operation(base, path, &url);
    if (answer != 0) {
        return answer;
    }
    *result = Q_TakeRivletText(url);
    return *result == nullptr ? 1 : 0;
}

}  // namespace

const RivletLibrary& Q_Rivlet() {
    if (!bound) {
        bound = LookUp();
    }
    return *bound;
}

void Q_BindRivlet(platform::LibraryHandle library) {
    bound = Load(library);
}

char* Q_TakeRivletText(char* text) {
    char* copy = Q_StrDup(text);
    if (text != nullptr && Q_Rivlet().free != nullptr) {
        Q_Rivlet().free(text);
    }
    return copy;
}

bool Q_IsNetFile(const char* text) {
    if (text == nullptr) {
        return false;
    }
    return Q_Rivlet().isNetFile != nullptr ? Q_Rivlet().isNetFile(text) == 0 : HasNetworkScheme(text);
}

bool Q_IsLocalPath(const char* text) {
    return !Q_IsNetFile(text);
}

std::int32_t Q_AbsoluteUrl(const char* base, const char* path, char** result) {
    return AskForUrl(Q_Rivlet().getAbsoluteUrl, Q_IsNetFile(base), base, path, result);
}

std::int32_t Q_RelativeUrl(const char* base, const char* path, char** result) {
    return AskForUrl(Q_Rivlet().getRelativeUrl, Q_IsNetFile(base) && Q_IsNetFile(path), base, path, result);
}

}  // namespace ventrix
