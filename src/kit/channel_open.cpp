// How channels come to be: the rest of their life stands in channels.cpp.
#include <optional>
#include <string>

#include "kit/channel_stream.h"
#include "kit/channels.h"
#include "kit/convert.h"
#include "kit/memory.h"
#include "kit/strings.h"
#include "platform/files.h"
#include "platform/temp_files.h"

namespace ventrix {
namespace {

constexpr std::uint8_t readAndWrite = Q_ChannelReadable | Q_ChannelWritable;

struct OpenMode {
    const char* text;
    std::uint8_t access;
    int streamMode;
    bool truncate;
    bool startsAtEnd;
};

// The longer texts come first.
constexpr OpenMode openModes[] = {
    {"r+", readAndWrite, Q_StreamReadWrite, false, false},
    {"r", Q_ChannelReadable, Q_StreamRead, false, false},
    {"w+", readAndWrite, Q_StreamReadWrite, true, false},
    {"w", Q_ChannelWritable, Q_StreamReadWrite, true, false},
    {"a", readAndWrite, Q_StreamReadWrite, false, true},
};

constexpr OpenMode tempMode = {"", readAndWrite, Q_StreamReadWrite, true, false};

std::optional<OpenMode> FindMode(const char* text) {
    for (const OpenMode& mode : openModes) {
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
    FilePath* path = Q_PathToFilePath(name.c_str(), nullptr, Q_NativePath);
    if (path == nullptr) {
        return nullptr;
    }
    Q_Channel* channel = OpenPath(path->text, tempMode);
    if (channel == nullptr) {
        platform::RemoveFile(name);
    }
    Q_FreeFilePath(path);
    return channel;
}

}  // namespace ventrix
