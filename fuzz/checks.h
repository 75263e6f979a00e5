// What the targets share: failing with a message, and cutting the input into parts.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace ventrix::fuzz {

/// Ends the process with the message unless the condition holds.
inline void Check(bool condition, const std::string& message) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", message.c_str());
        std::abort();
    }
}

/// Takes parts off the front of an input. At its end, numbers are 0 and strings empty.
class Parts {
  public:
    explicit Parts(std::string_view input) : rest_(input) {}

    bool AtEnd() const { return rest_.empty(); }

    std::uint8_t Byte() {
        const std::uint8_t byte = rest_.empty() ? 0 : static_cast<std::uint8_t>(rest_[0]);
        rest_.remove_prefix(rest_.empty() ? 0 : 1);
        return byte;
    }

    std::int64_t Number() {
        std::int64_t number = 0;
        const std::size_t size = std::min(sizeof number, rest_.size());
        std::memcpy(&number, rest_.data(), size);
        rest_.remove_prefix(size);
        return number;
    }

    /// Up to the next line feed, which is dropped.
    std::string Line() {
        const std::size_t end = std::min(rest_.find('\n'), rest_.size());
        std::string line(rest_.substr(0, end));
        rest_.remove_prefix(std::min(end + 1, rest_.size()));
        return line;
    }

    std::string Rest() { return std::string(std::exchange(rest_, {})); }

  private:
    std::string_view rest_;
};

}  // namespace ventrix::fuzz
