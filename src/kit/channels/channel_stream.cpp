#include "kit/channels/channel_stream.h"

#include <algorithm>
#include <optional>
#include <string>
#include <unordered_map>

#include "kit/channels/network_files.h"
#include "kit/paths/rivlet.h"
#include "kit/text/strings.h"
#include "platform/wide_text.h"

namespace ventrix {
namespace {

constexpr std::size_t kLongestPath = 4094;  // in UTF-16 units
constexpr std::uint32_t kBlockSize = 1024;

std::unordered_map<std::string, std::string> pathAliases;

// The local file to open for the path. Nothing for a network file that cannot be fetched: for writing, the
// cache's path for it is used even if the server has no such file yet.
std::optional<std::string> LocalPath(const char* path, int mode) {
    if (Q_IsLocalPath(path)) {
        return path;
    }
    char* copy = nullptr;
    if (Q_FetchNetFile(path, kFetchToWrite, &copy, nullptr) != 0 && mode != kStreamRead) {
        Q_CachePathFor(path, &copy);
    }
    const Q_String owner(copy);
    return copy == nullptr ? std::nullopt : std::optional<std::string>(copy);
}

platform::FileAccess AccessOf(int mode) {
    if (mode == kStreamRead) {
        return platform::FileAccess::kRead;
    }
    return mode == kStreamWrite ? platform::FileAccess::kWrite : platform::FileAccess::kReadWrite;
}

platform::FileDisposition DispositionOf(int mode, bool truncate) {
    if (mode == kStreamRead) {
        return platform::FileDisposition::kOpenExisting;
    }
    return truncate ? platform::FileDisposition::kCreateAlways : platform::FileDisposition::kOpenAlways;
}

void Store(std::uint32_t value, ULONG* out) {
    if (out != nullptr) {
        *out = value;
    }
}

void Store(std::uint32_t value, ULARGE_INTEGER* out) {
    if (out != nullptr) {
        out->QuadPart = value;
    }
}

}  // namespace

const char* Q_PathAlias(const char* path) {
    if (path == nullptr || pathAliases.empty()) {
        return path;
    }
    const auto found = pathAliases.find(path);
    return found == pathAliases.end() ? path : found->second.c_str();
}

void Q_SetPathAlias(const char* path, const char* alias) {
    if (path == nullptr) {
        return;
    }
    if (alias == nullptr) {
        pathAliases.erase(path);
    } else {
        pathAliases[path] = alias;
    }
}

ChannelStreamC::~ChannelStreamC() {
    platform::CloseFileHandle(file_);
}

int ChannelStreamC::OpenFile(const char* path, int mode, bool truncate) {
    if (path == nullptr || file_ != 0 || mode < kStreamRead || mode > kStreamReadWrite) {
        return 0;
    }
    const std::optional<std::string> local = LocalPath(Q_PathAlias(path), mode);
    // A path that is cut to the limit would name another file.
    if (!local || platform::WideFromUtf8(*local).size() > kLongestPath) {
        return 0;
    }
    file_ = platform::OpenFileHandle(*local, AccessOf(mode), DispositionOf(mode, truncate));
    return file_ != 0 ? 1 : 0;
}

HRESULT ChannelStreamC::Read(void* buffer, ULONG count, ULONG* read) {
    const std::uint32_t bytesRead = platform::ReadFromHandle(file_, buffer, count);
    Store(bytesRead, read);
    return bytesRead == count ? S_OK : S_FALSE;
}

HRESULT ChannelStreamC::Write(const void* bytes, ULONG count, ULONG* written) {
    const std::uint32_t bytesWritten = platform::WriteToHandle(file_, bytes, count);
    Store(bytesWritten, written);
    return bytesWritten == count ? S_OK : E_FAIL;
}

HRESULT ChannelStreamC::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) {
    const auto offset = static_cast<std::int32_t>(move.u.LowPart);
    const auto position = origin <= STREAM_SEEK_END
                              ? platform::SeekHandle(file_, offset, static_cast<platform::SeekOrigin>(origin))
                              : std::nullopt;
    Store(position ? static_cast<std::uint32_t>(*position) : static_cast<std::uint32_t>(E_FAIL), newPosition);
    return position ? S_OK : E_FAIL;
}

HRESULT ChannelStreamC::CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                               ULARGE_INTEGER* written) {
    std::uint32_t bytesRead = 0;
    std::uint32_t bytesWritten = 0;
    const int isDone = Q_StreamCopyBlocks(count.u.LowPart, this, &bytesRead, target, &bytesWritten);
    Store(bytesRead, read);
    Store(bytesWritten, written);
    return isDone != 0 ? S_OK : E_FAIL;
}

HRESULT ChannelStreamC::Stat(STATSTG* record, DWORD) {
    *record = STATSTG{};
    record->type = STGTY_STREAM;
    record->cbSize.QuadPart = static_cast<std::uint32_t>(platform::SizeOfHandle(file_).value_or(0));
    return S_OK;
}

HRESULT ChannelStreamC::SetSize(ULARGE_INTEGER) {
    return E_NOTIMPL;
}

HRESULT ChannelStreamC::Commit(DWORD) {
    return E_NOTIMPL;
}

HRESULT ChannelStreamC::Revert() {
    return E_NOTIMPL;
}

HRESULT ChannelStreamC::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) {
    return E_NOTIMPL;
}

HRESULT ChannelStreamC::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) {
    return E_NOTIMPL;
}

HRESULT ChannelStreamC::Clone(IStream**) {
    return E_NOTIMPL;
}

std::uint32_t Q_StreamReadAll(IStream* stream, void* buffer, std::uint32_t count) {
    std::uint32_t done = 0;
    while (done < count) {
        ULONG bytesRead = 0;
        stream->Read(static_cast<char*>(buffer) + done, count - done, &bytesRead);
        if (bytesRead == 0) {
            break;
        }
        done += bytesRead;
    }
    return done;
}

std::uint32_t Q_StreamWriteAll(IStream* stream, const void* buffer, std::uint32_t count) {
    std::uint32_t done = 0;
    while (done < count) {
        ULONG bytesWritten = 0;
        stream->Write(static_cast<const char*>(buffer) + done, count - done, &bytesWritten);
        if (bytesWritten == 0) {
            break;
        }
        done += bytesWritten;
    }
    return done;
}

int Q_StreamCopyBlocks(std::uint32_t count, IStream* source, std::uint32_t* readCount, IStream* target,
                       std::uint32_t* writtenCount) {
    char block[kBlockSize];
    *readCount = 0;
    *writtenCount = 0;
    while (*readCount < count) {
        ULONG bytesRead = 0;
        source->Read(block, std::min(kBlockSize, count - *readCount), &bytesRead);
        if (bytesRead == 0) {
            break;
        }
        *readCount += bytesRead;
        const std::uint32_t bytesWritten = Q_StreamWriteAll(target, block, bytesRead);
        *writtenCount += bytesWritten;
        if (bytesWritten < bytesRead) {
            return 0;
        }
    }
    return 1;
}

}  // namespace ventrix
