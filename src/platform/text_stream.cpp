#include "platform/text_stream.h"

namespace ventrix::platform {

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

}  // namespace ventrix::platform
