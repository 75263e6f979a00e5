// A growing sequence of bytes in kit memory. The buffer owns its block until TakeText hands it over. An
// allocation that fails is fatal.
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

    /// Adds count bytes with undefined content and returns their address. Invalidates earlier addresses.
    char* Extend(std::uint64_t count);

    void Append(const void* bytes, std::uint32_t count);

    /// Shortens the buffer to `size`, which must not exceed its current size.
    void Shrink(std::uint32_t size) { size_ = size; }

    std::uint32_t Size() const { return size_; }
    const char* Data() const { return bytes_; }

    /// Hands the bytes to the caller, followed by two zero bytes, in a block of exactly that size. The buffer
    /// is empty afterwards.
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
