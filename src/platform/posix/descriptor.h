// Owns a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace ventrix::platform {

class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsOpen() const { return number_ >= 0; }
    int Number() const { return number_; }

    /// Releases the descriptor to the caller, who closes it.
    int Detach() { return std::exchange(number_, -1); }

    /// Closes the descriptor now. False if the system reports an error of an earlier write.
    bool Close() {
        const int number = std::exchange(number_, -1);
        return number < 0 || ::close(number) == 0;
    }

  private:
    int number_;
};

}  // namespace ventrix::platform
