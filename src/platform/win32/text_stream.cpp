#include "platform/text_stream.h"

#include <utility>

#include "platform/drives.h"
#include "platform/win32/system_calls.h"

namespace ventrix::platform {
namespace {

constexpr std::intptr_t kNoFile = -1;

HANDLE SystemHandle(std::intptr_t file) {
    return reinterpret_cast<HANDLE>(file);
}

/// The host's contract for the log: the bytes of the path go to the narrow call as they are.
HANDLE OpenToAppend(const std::string& nativePath) {
    return ::CreateFileA(nativePath.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                         OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

TextStream::TextStream(std::string_view path)
    : file_(reinterpret_cast<std::intptr_t>(OpenToAppend(ToNative(path)))) {}

TextStream::~TextStream() {
    Close();
}

TextStream::TextStream(TextStream&& other) noexcept
    : file_(std::exchange(other.file_, kNoFile)), line_(std::exchange(other.line_, {})) {}

TextStream& TextStream::operator=(TextStream&& other) noexcept {
    std::swap(file_, other.file_);
    std::swap(line_, other.line_);
    return *this;
}

bool TextStream::IsOpen() const {
    return file_ != kNoFile;
}

void TextStream::Close() {
    if (!IsOpen()) {
        return;
    }
    Flush();
    ::CloseHandle(SystemHandle(std::exchange(file_, kNoFile)));
}

void TextStream::Flush() {
    // A line that cannot be written, for example on a full disk, is lost; later lines are still tried.
    WriteAll(SystemHandle(file_), line_.data(), line_.size());
    line_.clear();
}

}  // namespace ventrix::platform
