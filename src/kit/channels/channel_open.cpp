// How channels come to be: the rest of their life stands in channels.cpp.
#include <optional>
#include <string>

#include "kit/channels/channel_stream.h"
#include "kit/channels/channels.h"
#include "kit/memory.h"
#include "kit/text/convert.h"
#include "kit/text/strings.h"
#include "platform/files.h"
#include "platform/temp_files.h"

namespace ventrix {
namespace {

constexpr std::uint8_t kReadAndWrite = kChannelReadable | kChannelWritable;

struct OpenMode {
    const char* text;
    std::uint8_t access;
    int streamMode;
    bool truncate;
    bool startsAtEnd;
};

// The longer texts come first.
constexpr OpenMode kOpenModes[] = {
    {"r+", kReadAndWrite, kStreamReadWrite, false, false},
    {"r", kChannelReadable, kStreamRead, false, false},
    {"w+", kReadAndWrite, kStreamReadWrite, true, false},
    {"w", kChannelWritable, kStreamReadWrite, true, false},
    {"a", kReadAndWrite, kStreamReadWrite, false, true},
};

constexpr OpenMode kTempMode = {"", kReadAndWrite, kStreamReadWrite, true, false};

std::optional<OpenMode> FindMode(const char* text) {
    for (const OpenMode& mode : kOpenModes) {
        if (Q_StrPrefix(text, mode.text)) {
            return mode;
        }
    }
    return std::nullopt;
}

// A stream over the file; null if it can't be opened. Streams take UTF-8 paths.
IStream* OpenStream(const char* path, const OpenMode& mode) {
    const Q_String utf8(Q_CurrentToUtf8(path));
    auto* stream = new ChannelStreamC;
    if (stream->OpenFile(utf8.get(), mode.streamMode, mode.truncate) == 0) {
        stream->Release();
        return nullptr;
    }
    return stream;
}

// Fills in the record. False on failure, with what was filled in left to the caller.
bool Open(Q_Channel& channel, const char* path, const OpenMode& mode) {
    channel.access = mode.access;
    channel.path = Q_StrDup(path);
    channel.stream = channel.path == nullptr ? nullptr : OpenStream(path, mode);
    if (channel.stream != nullptr && mode.startsAtEnd) {
        channel.stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_END, nullptr);
    }
    return channel.stream != nullptr;
}

Q_Channel* OpenPath(const char* path, const OpenMode& mode) {
    auto* channel = static_cast<Q_Channel*>(Q_Calloc(1, sizeof(Q_Channel), 0));
    if (channel != nullptr && !Open(*channel, path, mode)) {
        Q_Free(channel->path);
        Q_FreeAndClear(&channel);
    }
    return channel;
}

}  // namespace

Q_Channel* Q_ChannelOpen(const FilePath* path, const char* mode) {
    const std::optional<OpenMode> found = FindMode(mode);
    if (!found || path == nullptr || path->text == nullptr) {
        return nullptr;
    }
    return OpenPath(path->text, *found);
}

Q_Channel* Q_ChannelOpenTemp() {
    const std::string name = platform::MakeTempFile(platform::TempFolder(), "QLT");
    FilePath* path = Q_PathToFilePath(name.c_str(), nullptr, kNativePath);
    if (path == nullptr) {
        return nullptr;
    }
    Q_Channel* channel = OpenPath(path->text, kTempMode);
    if (channel == nullptr) {
        platform::RemoveFile(name);
    }
    Q_FreeFilePath(path);
    return channel;
}

}  // namespace ventrix
