// A text file that is opened for appending and shared with other writers. Lines end in CR LF, and each one is
// written when it is complete. The stream owns the open file; it can be moved but not copied.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ventrix::platform {

class TextStream {
  public:
    /// A closed stream, which ignores what is written to it.
    TextStream() = default;

    /// Opens `path` (UTF-8, system notation) for appending and creates the file if it is missing, but not its
    /// folder. If the file cannot be opened, the stream is closed.
    explicit TextStream(std::string_view path);

    ~TextStream();
    TextStream(TextStream&& other) noexcept;
    TextStream& operator=(TextStream&& other) noexcept;
    TextStream(const TextStream&) = delete;
    TextStream& operator=(const TextStream&) = delete;

    bool IsOpen() const;

    /// Appends text to the current line. A line feed in it ends the line, as EndLine does.
    void Write(std::string_view text);

    /// Ends the current line and writes it, in one call, so that lines of several writers do not mix.
    void EndLine();

    /// Writes an incomplete line as it is and closes the file. The stream is then closed.
    void Close();

  private:
    void Flush();

    std::intptr_t file_ = -1;  ///< Of the system; -1 for none.
    std::string line_;
};

}  // namespace ventrix::platform
