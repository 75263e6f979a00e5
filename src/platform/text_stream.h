// A text file that grows: opened for appending, shared with others, line ends CR LF, every line handed to the
// system when it is finished. The stream owns the open file; it can be moved, not copied.
#pragma once

#include <string>
#include <string_view>

namespace ventrix::platform {

class TextStream {
  public:
    /// A closed stream: what is written to it is dropped.
    TextStream() = default;

    /// Opens `path` (the bytes of a path in system notation) for appending and creates the file if it is
    /// missing; its folder is not created. An empty or unusable path leaves the stream closed.
    explicit TextStream(std::string_view path);

    ~TextStream();
    TextStream(TextStream&& other) noexcept;
    TextStream& operator=(TextStream&& other) noexcept;
    TextStream(const TextStream&) = delete;
    TextStream& operator=(const TextStream&) = delete;

    bool IsOpen() const;

    /// Appends text to the line that is being written. A line feed in it ends a line, as EndLine does.
    void Write(std::string_view text);

    /// Ends the line and flushes it. A line goes out in one piece, so lines of other writers do not cut it.
    void EndLine();

    /// Flushes an unfinished line and closes the file. The stream is closed from then on.
    void Close();

  private:
    void Flush();

    int file_ = -1;
    std::string line_;
};

}  // namespace ventrix::platform
