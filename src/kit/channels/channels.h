// Channels: buffered file handles in the manner of C streams, over the stream of channel_stream.h. The caller
// owns a channel and closes it. Sizes and positions are bytes, in 32 bits. Where they differ from C streams:
// between reading and writing there has to be a seek from the start or the end, or what is written lands
// behind the bytes read ahead. "a" begins at the end, but later writes go where the position is. A seek to
// before the start answers 0 and leaves the position somewhere in what was read ahead.
#pragma once

#include <cstdint>

#include "kit/paths/file_path.h"
#include "platform/com.h"

namespace ventrix {

constexpr std::uint32_t kChannelBufferSize = 512;

/// What the last operation on a channel did.
constexpr std::uint8_t kChannelIdle = 0;
constexpr std::uint8_t kChannelWrote = 1;
constexpr std::uint8_t kChannelHasRead = 2;

/// What a channel may do.
constexpr std::uint8_t kChannelReadable = 1;
constexpr std::uint8_t kChannelWritable = 2;

/// In kit memory, zeroed at birth.
struct Q_Channel {
    char* path;       ///< As given at opening, owned.
    IStream* stream;  ///< Owned through its reference count.
    char buffer[kChannelBufferSize];
    std::int16_t position;   ///< Read: next byte in the buffer. Write: bytes waiting.
    std::int16_t filled;     ///< Read: valid bytes in the buffer.
    std::uint8_t direction;  ///< kChannelIdle, kChannelWrote, kChannelHasRead
    std::uint8_t access;     ///< kChannelReadable, kChannelWritable
    std::uint32_t atEnd;     ///< 1 once a read came back short; cleared by a seek.
};

/// Opens a file by a mode text that begins with "r", "r+", "w", "w+" or "a". Null on failure and for any
/// other mode.
Q_Channel* Q_ChannelOpen(const FilePath* path, const char* mode);

/// Opens a new, empty file in the folder for temporary files, to be read and written. Null on failure.
Q_Channel* Q_ChannelOpenTemp();

/// Reads up to count items. The whole items read; 0 for null and for a channel that is not readable.
std::uint32_t Q_ChannelRead(void* buffer, std::uint32_t size, std::uint32_t count, Q_Channel* channel);

/// Writes count items. count, or 0 if they did not all go, for null and for a channel that is not writable.
std::uint32_t Q_ChannelWrite(const void* buffer, std::uint32_t size, std::uint32_t count, Q_Channel* channel);

/// The next byte, which stays the next; -1 at the end, for null and for a channel that is not readable.
int Q_ChannelPeek(Q_Channel* channel);

/// Moves to an offset from the start (0), the position (1) or the end (2). 0, or -1 for any other origin.
/// Null is fatal.
int Q_ChannelSeek(Q_Channel* channel, std::int32_t offset, int origin);

/// The position. Null is fatal.
std::uint32_t Q_ChannelTell(Q_Channel* channel);

/// The file's size, waiting bytes included; 0 for null.
std::uint32_t Q_ChannelSize(Q_Channel* channel);

/// Writes the waiting bytes out. 0, or 1 if not all went. 0 for null.
int Q_ChannelFlush(Q_Channel* channel);

/// Copies what is left of the source to the target's position. 0, or 1 on failure. Null is fatal.
int Q_ChannelCopy(Q_Channel* source, Q_Channel* target);

/// Whether a read came back short since the last seek. Null is fatal.
std::uint32_t Q_ChannelAtEnd(const Q_Channel* channel);

/// Closes the channel, and saves a network file that could be written. Stores null in the pointer. 0, or -1
/// for null.
int Q_ChannelClose(Q_Channel** channel);

/// The same, and deletes the file.
int Q_ChannelCloseAndDelete(Q_Channel** channel);

}  // namespace ventrix
