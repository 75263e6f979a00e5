// Channels: buffered file handles similar to C streams, over the stream of channel_stream.h. The caller owns
// a channel and closes it. Sizes and positions are in bytes, 32 bits wide. Differences from C streams:
// - Between reading and writing the caller has to seek from the start or the end; otherwise the bytes are
//   written after those that were read ahead.
// - "a" starts at the end of the file, but later writes go to the current position.
// - A seek to before the start returns 0 and leaves the position unspecified.
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

/// Bits of the operations that a channel allows.
constexpr std::uint8_t kChannelReadable = 1;
constexpr std::uint8_t kChannelWritable = 2;

/// A record in kit memory, zeroed when it is allocated.
struct Q_Channel {
    char* path;       ///< The path given at opening, owned.
    IStream* stream;  ///< Owned through its reference count.
    char buffer[kChannelBufferSize];
    std::int16_t position;   ///< After a read: next byte in the buffer. After a write: bytes waiting.
    std::int16_t filled;     ///< After a read: valid bytes in the buffer.
    std::uint8_t direction;  ///< kChannelIdle, kChannelWrote, kChannelHasRead
    std::uint8_t access;     ///< kChannelReadable, kChannelWritable
    std::uint32_t atEnd;     ///< 1 after a read returned fewer bytes than requested; cleared by a seek.
};

/// Opens a file. The mode begins with "r", "r+", "w", "w+" or "a". Null on failure and for any other mode.
Q_Channel* Q_ChannelOpen(const FilePath* path, const char* mode);

/// Opens a new, empty file in the folder for temporary files, for reading and writing. Null on failure.
Q_Channel* Q_ChannelOpenTemp();

/// Reads up to count items of `size` bytes and returns the complete items read; 0 for a null channel and for
/// one that is not readable.
std::uint32_t Q_ChannelRead(void* buffer, std::uint32_t size, std::uint32_t count, Q_Channel* channel);

/// Writes count items of `size` bytes. Returns count; 0 if not all could be written, for a null channel and
/// for one that is not writable. A failure to write out a full buffer is not reported here.
std::uint32_t Q_ChannelWrite(const void* buffer, std::uint32_t size, std::uint32_t count, Q_Channel* channel);

/// The next byte, without consuming it; -1 at the end, for null and for a channel that is not readable.
int Q_ChannelPeek(Q_Channel* channel);

/// Moves to an offset from the start (0), the current position (1) or the end (2). 0, or -1 for any other
/// origin. Null is fatal.
int Q_ChannelSeek(Q_Channel* channel, std::int32_t offset, int origin);

/// The current position. Null is fatal.
std::uint32_t Q_ChannelTell(Q_Channel* channel);

/// The size of the file, after writing out the waiting bytes; 0 for null.
std::uint32_t Q_ChannelSize(Q_Channel* channel);

/// Writes out the waiting bytes. 0, or 1 if not all could be written; the rest are lost. 0 for null.
int Q_ChannelFlush(Q_Channel* channel);

/// Copies the source from its current position to its end, to the target's current position. 0, or 1 on
/// failure. Null is fatal.
int Q_ChannelCopy(Q_Channel* source, Q_Channel* target);

/// 1 if a read since the last seek returned fewer bytes than requested, else 0. Null is fatal.
std::uint32_t Q_ChannelAtEnd(const Q_Channel* channel);

/// Closes the channel, and sends a network file that was opened for writing back to its server. Sets the
/// pointer to null. 0, or -1 for null.
int Q_ChannelClose(Q_Channel** channel);

/// As Q_ChannelClose, and deletes the file.
int Q_ChannelCloseAndDelete(Q_Channel** channel);

}  // namespace ventrix
