#include "platform/text_stream.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

#include "platform/drives.h"
#include "platform/posix/held_files.h"
#include "platform/posix/whole_write.h"

namespace ventrix::platform {

TextStream::TextStream(std::string_view path) {
    // Without O_NONBLOCK, opening a pipe that nobody reads would wait.
    file_ = ::open(ToNative(path).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
    if (file_ >= 0) {
        ::fcntl(file_, F_SETFL, O_APPEND);
        HoldFile(file_);
    }
}

TextStream::~TextStream() {
    Close();
}

TextStream::TextStream(TextStream&& other) noexcept
    : file_(std::exchange(other.file_, -1)), line_(std::exchange(other.line_, {})) {}

TextStream& TextStream::operator=(TextStream&& other) noexcept {
    std::swap(file_, other.file_);
    std::swap(line_, other.line_);
    return *this;
}

bool TextStream::IsOpen() const {
    return file_ >= 0;
}

void TextStream::Write(std::string_view text) {
    if (!IsOpen()) {
        return;
    }
    for (const char c : text) {
        if (c == '\n') {
            EndLine();
        } else {
            line_ += c;
        }
    }
}

void TextStream::EndLine() {
    if (!IsOpen()) {
        return;
    }
    line_ += "\r\n";
    Flush();
}

void TextStream::Close() {
    if (!IsOpen()) {
        return;
    }
    Flush();
    ReleaseFile(file_);
    ::close(std::exchange(file_, -1));
}

void TextStream::Flush() {
    // A line that cannot be written, for example on a full disk, is lost; later lines are still tried.
    WriteAll(file_, line_.data(), line_.size());
    line_.clear();
}

}  // namespace ventrix::platform
