#include "kit/channels/channels.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "kit/channels/channel_stream.h"
#include "kit/channels/network_files.h"
#include "kit/memory.h"
#include "kit/text/convert.h"
#include "kit/text/encodings.h"
#include "kit/text/strings.h"
#include "platform/files.h"
#include "platform/temp_files.h"

namespace ventrix {
namespace {

// A channel has one buffer, which serves one direction at a time. After a read (kChannelHasRead) it holds
// bytes read ahead: `filled` of them, of which those from `position` on are still to be served, so the stream
// is `filled - position` bytes ahead of what the caller sees. After a write (kChannelWrote) it holds the
// first `position` bytes that wait to be written, so the stream is that many bytes short of what the caller
// sees; `filled` is then 0. Every operation first brings the buffer into the direction that it needs:
// reading, seeking, flushing and closing write out the waiting bytes; writing discards what was read ahead
// without moving the stream back, which is why a caller has to seek between reading and writing. What the
// buffer cannot serve or take of a request goes directly between the stream and the caller's memory if it is
// at least a buffer's size.

constexpr std::uint32_t kWholeSource = 0xFFFFFFFF;
constexpr std::uint8_t kReadAndWrite = kChannelReadable | kChannelWritable;

struct OpenMode {
    const char* text;
    std::uint8_t access;
    int streamMode;
    bool truncate;
    bool startsAtEnd;
};

// The first match by prefix counts, so "r+" comes before "r".
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

// A stream over the file; null if it cannot be opened. Streams take UTF-8 paths.
IStream* OpenStream(const char* path, const OpenMode& mode) {
    const Q_String utf8(Q_CurrentToUtf8(path));
    auto* stream = new ChannelStreamC;
    if (stream->OpenFile(utf8.get(), mode.streamMode, mode.truncate) == 0) {
        stream->Release();
        return nullptr;
    }
    return stream;
}

// Fills in the record. On failure the caller frees what was filled in.
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

bool MayRead(const Q_Channel* channel) {
    return channel != nullptr && (channel->access & kChannelReadable) != 0;
}

bool MayWrite(const Q_Channel* channel) {
    return channel != nullptr && (channel->access & kChannelWritable) != 0;
}

void EmptyBuffer(Q_Channel& channel) {
    channel.position = 0;
    channel.filled = 0;
}

// Writes out the waiting bytes. False if not all could be written; the rest are lost.
bool WriteWaiting(Q_Channel& channel) {
    if (channel.direction != kChannelWrote) {
        return true;
    }
    const auto waiting = static_cast<std::uint32_t>(channel.position);
    EmptyBuffer(channel);
    return Q_StreamWriteAll(channel.stream, channel.buffer, waiting) == waiting;
}

std::uint32_t BytesAhead(const Q_Channel& channel) {
    return channel.direction == kChannelHasRead
               ? static_cast<std::uint32_t>(channel.filled - channel.position)
               : 0;
}

// Serves up to count bytes from what was read ahead.
std::uint32_t ServeFromBuffer(Q_Channel& channel, char* buffer, std::uint32_t count) {
    const std::uint32_t served = std::min(count, BytesAhead(channel));
    std::memcpy(buffer, channel.buffer + channel.position, served);
    channel.position = static_cast<std::int16_t>(channel.position + static_cast<std::int16_t>(served));
    return served;
}

// Reads from the stream: large requests straight into the caller's memory, small ones through the buffer.
std::uint32_t ReadFromStream(Q_Channel& channel, char* buffer, std::uint32_t count) {
    EmptyBuffer(channel);
    if (count >= kChannelBufferSize) {
        return Q_StreamReadAll(channel.stream, buffer, count);
    }
    const std::uint32_t bytesRead = Q_StreamReadAll(channel.stream, channel.buffer, kChannelBufferSize);
    channel.filled = static_cast<std::int16_t>(bytesRead);
    return ServeFromBuffer(channel, buffer, count);
}

std::uint32_t ReadBytes(Q_Channel& channel, char* buffer, std::uint32_t count) {
    WriteWaiting(channel);
    channel.direction = kChannelHasRead;
    std::uint32_t done = ServeFromBuffer(channel, buffer, count);
    if (done < count) {
        done += ReadFromStream(channel, buffer + done, count - done);
    }
    if (done < count) {
        channel.atEnd = 1;
    }
    return done;
}

void BeginToWrite(Q_Channel& channel) {
    if (channel.direction == kChannelHasRead) {
        EmptyBuffer(channel);
    }
    channel.direction = kChannelWrote;
}

// Adds bytes to those that wait, as many as fit, and returns their number.
std::uint32_t PutToBuffer(Q_Channel& channel, const char* bytes, std::uint32_t count) {
    const auto waiting = static_cast<std::uint32_t>(channel.position);
    const std::uint32_t taken = std::min(count, kChannelBufferSize - waiting);
    std::memcpy(channel.buffer + waiting, bytes, taken);
    channel.position = static_cast<std::int16_t>(waiting + taken);
    return taken;
}

bool WriteBytes(Q_Channel& channel, const char* bytes, std::uint32_t count) {
    BeginToWrite(channel);
    const std::uint32_t taken = PutToBuffer(channel, bytes, count);
    if (channel.position == kChannelBufferSize) {
        WriteWaiting(channel);
    }
    bytes += taken;
    count -= taken;
    if (count >= kChannelBufferSize) {
        return Q_StreamWriteAll(channel.stream, bytes, count) == count;
    }
    PutToBuffer(channel, bytes, count);
    return true;
}

// The size of the items in bytes. 0 if it exceeds 32 bits: a caller cannot have that much memory.
std::uint32_t BytesOf(std::uint32_t size, std::uint32_t count) {
    const std::uint64_t bytes = std::uint64_t{size} * count;
    return bytes <= 0xFFFFFFFF ? static_cast<std::uint32_t>(bytes) : 0;
}

void SeekStream(Q_Channel& channel, std::int64_t offset, int origin) {
    // The stream takes a signed 32-bit offset; correcting one by the bytes read ahead can exceed it.
    LARGE_INTEGER move{};
    move.QuadPart = std::max<std::int64_t>(offset, std::numeric_limits<std::int32_t>::min());
    channel.stream->Seek(move, static_cast<DWORD>(origin), nullptr);
    EmptyBuffer(channel);
}

// Moves within the bytes read ahead. False if the target lies outside of them.
bool MoveInBuffer(Q_Channel& channel, std::int32_t offset) {
    const std::int64_t target = std::int64_t{channel.position} + offset;
    if (channel.direction != kChannelHasRead || target < 0 || target > channel.filled) {
        return false;
    }
    channel.position = static_cast<std::int16_t>(target);
    return true;
}

int CopyStream(IStream* source, IStream* target) {
    ULARGE_INTEGER count{};
    count.QuadPart = kWholeSource;
    const HRESULT answer = source->CopyTo(target, count, nullptr, nullptr);
    if (answer != E_NOTIMPL) {
        return answer == S_OK ? 0 : 1;
    }
    std::uint32_t bytesRead = 0;
    std::uint32_t bytesWritten = 0;
    return Q_StreamCopyBlocks(kWholeSource, source, &bytesRead, target, &bytesWritten) != 0 ? 0 : 1;
}

/// The UTF-8 string in the current encoding; null if it has no form there.
Q_String ToCurrent(const std::string& utf8) {
    if (Q_CurrentEncoding() == kUtf8Encoding) {
        return Q_String(Q_StrDup(utf8.c_str()));
    }
    const char* converter = Q_EncodingAt(Q_CurrentEncoding()).converterName;
    Q_String converted(Q_ConvertText(utf8.c_str(), "UTF-8", converter, false, false));
    const Q_String back(Q_CurrentToUtf8(converted.get()));
    return back != nullptr && utf8 == back.get() ? std::move(converted) : nullptr;
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
    const std::string folder = platform::TempFolder();
    if (ToCurrent(folder) == nullptr) {
        return nullptr;
    }
    const std::string name = platform::MakeTempFile(folder, "QLT");
    FilePath* path = Q_PathToFilePath(ToCurrent(name).get(), nullptr, kNativePath);
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

std::uint32_t Q_ChannelRead(void* buffer, std::uint32_t size, std::uint32_t count, Q_Channel* channel) {
    const std::uint32_t bytes = BytesOf(size, count);
    if (!MayRead(channel) || bytes == 0) {
        return 0;
    }
    return ReadBytes(*channel, static_cast<char*>(buffer), bytes) / size;
}

std::uint32_t Q_ChannelWrite(const void* buffer, std::uint32_t size, std::uint32_t count,
                             Q_Channel* channel) {
    const std::uint32_t bytes = BytesOf(size, count);
    if (!MayWrite(channel) || bytes == 0) {
        return 0;
    }
    return WriteBytes(*channel, static_cast<const char*>(buffer), bytes) ? count : 0;
}

int Q_ChannelPeek(Q_Channel* channel) {
    if (!MayRead(channel)) {
        return -1;
    }
    unsigned char byte = 0;
    if (ReadBytes(*channel, reinterpret_cast<char*>(&byte), 1) == 0) {
        return -1;
    }
    // A single byte is always served from the buffer, so `position` is at least 1.
    --channel->position;
    return byte;
}

int Q_ChannelSeek(Q_Channel* channel, std::int32_t offset, int origin) {
    if (channel == nullptr) {
        Q_Fatal();
    }
    if (origin < 0 || origin > 2) {
        return -1;
    }
    channel->atEnd = 0;
    WriteWaiting(*channel);
    if (origin != 1) {
        SeekStream(*channel, offset, origin);
    } else if (!MoveInBuffer(*channel, offset)) {
        SeekStream(*channel, std::int64_t{offset} - BytesAhead(*channel), origin);
    }
    return 0;
}

std::uint32_t Q_ChannelTell(Q_Channel* channel) {
    if (channel == nullptr) {
        Q_Fatal();
    }
    ULARGE_INTEGER position{};
    channel->stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_CUR, &position);
    const auto waiting = static_cast<std::uint32_t>(channel->position);
    return position.u.LowPart + (channel->direction == kChannelWrote ? waiting : 0) - BytesAhead(*channel);
}

std::uint32_t Q_ChannelSize(Q_Channel* channel) {
    if (channel == nullptr) {
        return 0;
    }
    WriteWaiting(*channel);
    STATSTG record{};
    channel->stream->Stat(&record, 0);
    return record.cbSize.u.LowPart;
}

int Q_ChannelFlush(Q_Channel* channel) {
    return channel == nullptr || WriteWaiting(*channel) ? 0 : 1;
}

int Q_ChannelCopy(Q_Channel* source, Q_Channel* target) {
    if (source == nullptr || target == nullptr) {
        Q_Fatal();
    }
    if (!MayRead(source) || !MayWrite(target)) {
        return 1;
    }
    WriteWaiting(*source);
    source->direction = kChannelHasRead;
    // The source stream is already past the bytes that were read ahead; they are copied separately.
    char rest[kChannelBufferSize];
    const std::uint32_t left = ServeFromBuffer(*source, rest, sizeof rest);
    if (!WriteBytes(*target, rest, left)) {
        return 1;
    }
    WriteWaiting(*target);
    return CopyStream(source->stream, target->stream);
}

std::uint32_t Q_ChannelAtEnd(const Q_Channel* channel) {
    if (channel == nullptr) {
        Q_Fatal();
    }
    return channel->atEnd;
}

int Q_ChannelClose(Q_Channel** channel) {
    if (channel == nullptr || *channel == nullptr) {
        return -1;
    }
    WriteWaiting(**channel);
    (*channel)->stream->Release();
    if (MayWrite(*channel)) {
        Q_SaveNetFile((*channel)->path, nullptr);
    }
    Q_Free((*channel)->path);
    return Q_FreeAndClear(channel);
}

int Q_ChannelCloseAndDelete(Q_Channel** channel) {
    if (channel == nullptr || *channel == nullptr) {
        return -1;
    }
    const Q_String path(Q_CurrentToUtf8((*channel)->path));
    Q_ChannelClose(channel);
    platform::RemoveFile(path.get());
    return 0;
}

}  // namespace ventrix
