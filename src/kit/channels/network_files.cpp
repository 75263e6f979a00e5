#include "kit/channels/network_files.h"

#include "kit/memory.h"
#include "kit/paths/rivlet.h"

namespace ventrix {
namespace {

constexpr std::int32_t kRefused = 1;
constexpr std::int32_t kLastKnownError = 19;

std::int32_t LastError() {
    if (Q_Rivlet().getLastError == nullptr) {
        return kOtherNetError;
    }
    const std::int32_t error = Q_Rivlet().getLastError();
    return error >= 0 && error <= kLastKnownError ? error : kOtherNetError;
}

// Returns the answer, and stores the error number if it is a failure.
std::int32_t Reported(std::int32_t answer, std::int32_t* error) {
    if (answer != 0 && error != nullptr) {
        *error = LastError();
    }
    return answer;
}

// Runs a transfer if the URL names a network file and the library has the operation.
template <class Operation, class Argument>
std::int32_t Transfer(Operation* operation, const char* url, Argument argument, std::int32_t* error) {
    const bool isAllowed = operation != nullptr && Q_IsNetFile(url);
    return Reported(isAllowed ? operation(url, argument) : kRefused, error);
}

// Runs an operation that stores a string, and stores a copy in kit memory in its place.
template <class Operation>
std::int32_t AskForString(Operation operation, bool isAllowed, char** text) {
    if (text == nullptr) {
        Q_Fatal();
    }
    *text = nullptr;
    if (!isAllowed) {
        return kRefused;
    }
    char* stored = nullptr;
    const std::int32_t answer = operation(&stored);
    if (answer != 0) {
        return answer;
    }
    *text = Q_TakeRivletText(stored);
    return *text == nullptr ? kRefused : 0;
}

using TextOperation = std::int32_t(const char* text, char** result);

std::int32_t Query(TextOperation* operation, bool isAllowed, const char* text, char** result) {
    const auto ask = [&](char** stored) { return operation(text, stored); };
    return AskForString(ask, operation != nullptr && isAllowed, result);
}

std::int32_t Open(const char* url, std::int32_t flags, char** path) {
    const auto open = [&](char** stored) { return Q_Rivlet().open(url, flags, stored); };
    return AskForString(open, Q_Rivlet().open != nullptr && Q_IsNetFile(url), path);
}

}  // namespace

std::int32_t Q_FetchNetFile(const char* url, std::int32_t flags, char** path, std::int32_t* error) {
    const std::int32_t answer = Reported(Open(url, flags, path), error);
    return answer != 0 && Q_CachedPathOf(url, path) == 0 ? 0 : answer;
}

std::int32_t Q_CachedPathOf(const char* url, char** path) {
    return Query(Q_Rivlet().queryCacheForPath, Q_IsNetFile(url), url, path);
}

std::int32_t Q_UrlOfCachedFile(const char* path, char** url) {
    return Query(Q_Rivlet().queryCacheForUrl, path != nullptr, path, url);
}

std::int32_t Q_CachePathFor(const char* url, char** path) {
    return Query(Q_Rivlet().getCacheFile, Q_IsNetFile(url), url, path);
}

std::int32_t Q_SaveNetFile(const char* url, std::int32_t* error) {
    return Transfer(Q_Rivlet().save, url, 0, error);
}

std::int32_t Q_PutNetFile(const char* url, const char* localFile, std::int32_t* error) {
    return Transfer(Q_Rivlet().put, url, localFile, error);
}

std::int32_t Q_UploadNetFolder(const char* url, const char* localFolder, std::int32_t* error) {
    return Transfer(Q_Rivlet().uploadFolder, url, localFolder, error);
}

std::int32_t Q_StatNetFile(const char* url, std::int32_t flags, std::int32_t* error) {
    return Transfer(Q_Rivlet().stat, url, flags, error);
}

std::int32_t Q_CleanUrl(const char* url, char** cleanUrl) {
    return Query(Q_Rivlet().cleanUrl, Q_IsNetFile(url), url, cleanUrl);
}

}  // namespace ventrix
