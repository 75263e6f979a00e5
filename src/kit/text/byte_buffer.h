// Bytes that grow in kit memory. It owns its block until the text is taken. An allocation that fails is
// fatal.
#pragma once

#include <cstdint>
#include <utility>

namespace ventrix {

class ByteBuffer {
  public:
    ByteBuffer() = default;
    ~ByteBuffer();
    ByteBuffer(ByteBuffer&& other) noexcept { Swap(other); }
    ByteBuffer& operator=(ByteBuffer&& other) noexcept {
        Swap(other);
        return *this;
    }

    /// Makes the buffer longer and answers where the new bytes lie. Their content is undefined. Earlier
    /// addresses no longer hold.
    char* Extend(std::uint64_t count);

    void Append(const void* bytes, std::uint32_t count);

    /// Cuts the buffer to a size that it has or exceeds.
    void Shrink(std::uint32_t size) { size_ = size; }

    std::uint32_t Size() const { return size_; }
    const char* Data() const { return bytes_; }

    /// The bytes with two zero bytes behind them, in a block of exactly that size, which is the caller's.
    char* TakeText();

  private:
    void Swap(ByteBuffer& other) noexcept {
        std::swap(bytes_, other.bytes_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    char* bytes_ = nullptr;
    std::uint32_t size_ = 0;
    std::uint32_t capacity_ = 0;
};

}  // namespace ventrix
