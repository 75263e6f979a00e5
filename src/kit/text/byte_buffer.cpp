#include "kit/text/byte_buffer.h"

#include <algorithm>
#include <cstring>

#include "kit/memory.h"

namespace ventrix {

ByteBuffer::~ByteBuffer() {
    Q_Free(bytes_);
}

char* ByteBuffer::Extend(std::uint64_t count) {
    constexpr std::uint64_t kMost = 0xFFFFFFFF;
    const std::uint64_t needed = size_ + count;
    if (needed > kMost) {
        Q_MemoryFailure();
    }
    if (needed > capacity_) {
        const std::uint64_t grown =
            std::min(std::max<std::uint64_t>(needed, std::uint64_t{capacity_} * 2), kMost);
        bytes_ = static_cast<char*>(Q_Realloc(bytes_, static_cast<std::uint32_t>(grown), kMustSucceed));
        capacity_ = static_cast<std::uint32_t>(grown);
    }
    char* place = bytes_ + size_;
    size_ = static_cast<std::uint32_t>(needed);
    return place;
}

void ByteBuffer::Append(const void* bytes, std::uint32_t count) {
    if (count > 0) {
        std::memcpy(Extend(count), bytes, count);
    }
}

char* ByteBuffer::TakeText() {
    Append("\0", 2);
    auto* text = static_cast<char*>(Q_Realloc(std::exchange(bytes_, nullptr), size_, kMustSucceed));
    size_ = 0;
    capacity_ = 0;
    return text;
}

}  // namespace ventrix
