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
    const int file =
        ::open(ToNative(path).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
    if (file >= 0) {
        ::fcntl(file, F_SETFL, O_APPEND);
        HoldFile(file);
    }
    file_ = file;
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

void TextStream::Close() {
    if (!IsOpen()) {
        return;
    }
    Flush();
    const auto file = static_cast<int>(std::exchange(file_, -1));
    ReleaseFile(file);
    ::close(file);
}

void TextStream::Flush() {
    // A line that cannot be written, for example on a full disk, is lost; later lines are still tried.
    WriteAll(static_cast<int>(file_), line_.data(), line_.size());
    line_.clear();
}

}  // namespace ventrix::platform
