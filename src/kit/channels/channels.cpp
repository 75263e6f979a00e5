#include "kit/channels/channels.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "kit/channels/channel_stream.h"
#include "kit/channels/network_files.h"
#include "kit/memory.h"
#include "kit/text/convert.h"
#include "kit/text/strings.h"
#include "platform/files.h"

namespace ventrix {
namespace {

constexpr std::uint32_t kWholeSource = 0xFFFFFFFF;

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

// Writes the waiting bytes out. False if not all went; those that did not are lost.
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

// Takes up to count bytes from what was read ahead.
std::uint32_t ServeFromBuffer(Q_Channel& channel, char* buffer, std::uint32_t count) {
    const std::uint32_t served = std::min(count, BytesAhead(channel));
    std::memcpy(buffer, channel.buffer + channel.position, served);
    channel.position = static_cast<std::int16_t>(channel.position + static_cast<std::int16_t>(served));
    return served;
}

// Reads from the stream: much of it straight into the caller's memory, little of it through the buffer.
std::uint32_t ReadFromStream(Q_Channel& channel, char* buffer, std::uint32_t count) {
    EmptyBuffer(channel);
    if (count >= kChannelBufferSize) {
        return Q_StreamReadAll(channel.stream, buffer, count);
    }
    const std::uint32_t came = Q_StreamReadAll(channel.stream, channel.buffer, kChannelBufferSize);
    channel.filled = static_cast<std::int16_t>(came);
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

// Puts bytes to those that wait, as many as find room.
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

// The bytes of some items; 0 where that is more than 32 bits can tell, since no such memory exists for them.
std::uint32_t BytesOf(std::uint32_t size, std::uint32_t count) {
    const std::uint64_t bytes = std::uint64_t{size} * count;
    return bytes <= 0xFFFFFFFF ? static_cast<std::uint32_t>(bytes) : 0;
}

void SeekStream(Q_Channel& channel, std::int64_t offset, int origin) {
    LARGE_INTEGER move{};
    move.QuadPart = std::max<std::int64_t>(offset, std::numeric_limits<std::int32_t>::min());
    channel.stream->Seek(move, static_cast<DWORD>(origin), nullptr);
    EmptyBuffer(channel);
}

// Moves within what was read ahead. False if the target lies outside.
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
    std::uint32_t came = 0;
    std::uint32_t went = 0;
    return Q_StreamCopyBlocks(kWholeSource, source, &came, target, &went) != 0 ? 0 : 1;
}

}  // namespace

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
    // A single byte always comes through the buffer, so there is room to step back.
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
