#include "kit/format/format.h"

#include <algorithm>
#include <cstring>

#include "kit/console.h"
#include "kit/format/format_item.h"
#include "kit/text/characters.h"
#include "kit/text/encodings.h"
#include "kit/text/strings.h"

namespace ventrix {
namespace {

constexpr std::uint32_t kBufferCapacity = 2147483646;
constexpr std::uint32_t kLongestConsolePiece = 255;

struct Output {
    Q_FormatSink sink;
    void* context;
    std::uint32_t written;

    void Write(const char* text, std::uint32_t count) { written += sink(context, text, count); }
};

// Stores the count of bytes written so far through the next pointer argument; "h" selects 16 bits.
void StoreWritten(const FormatItem& item, std::uint32_t written, FormatArguments& arguments) {
    void* target = va_arg(arguments.list, void*);
    if (target == nullptr) {
        return;
    }
    if (item.text[std::strlen(item.text) - 2] == 'h') {
        const auto value = static_cast<std::uint16_t>(written);
        std::memcpy(target, &value, sizeof value);
    } else {
        std::memcpy(target, &written, sizeof written);
    }
}

// Writes the item. False when memory runs out.
bool WriteItem(const FormatItem& item, FormatArguments& arguments, FormatBuffer& buffer, Output& output) {
    if (item.letter == 'n') {
        StoreWritten(item, output.written, arguments);
        return true;
    }
    const int length = buffer.Print(item, arguments);
    if (length < 0) {
        return false;
    }
    output.Write(buffer.Text(), static_cast<std::uint32_t>(length));
    return true;
}

void Format(Output& output, const char* format, FormatArguments& arguments) {
    FormatBuffer buffer;
    while (true) {
        const auto run = static_cast<std::uint32_t>(std::strcspn(format, "%"));
        output.Write(format, run);
        format += run;
        if (*format == '\0') {
            return;
        }
        FormatItem item;
        if (!ReadFormatItem(format, arguments, item)) {
            output.Write(format, item.end);
            return;
        }
        if (!WriteItem(item, arguments, buffer, output)) {
            return;
        }
        format += item.end;
    }
}

struct BufferContext {
    char* at;
    std::uint32_t available;
};

std::uint32_t WriteToBuffer(void* context, const char* text, std::uint32_t count) {
    auto* buffer = static_cast<BufferContext*>(context);
    const std::uint32_t most = std::min(count, buffer->available);
    const std::uint32_t taken = Q_StrCopyChars(buffer->at, text, most + 1, Q_CurrentEncoding());
    buffer->at += taken;
    buffer->available -= taken;
    return taken;
}

// The hook needs terminated text, and a run is terminated only if it is the last one or a formatted item. Any
// other run is copied in pieces.
std::uint32_t WriteToConsole(void*, const char* text, std::uint32_t count) {
    if (Q_ConsoleHook == nullptr) {
        return count;
    }
    if (Q_StrLen(text) == count) {
        Q_ConsoleHook(text);
        return count;
    }
    char piece[kLongestConsolePiece + 1];
    for (std::uint32_t done = 0; done < count;) {
        const std::uint32_t most = std::min(count - done, kLongestConsolePiece);
        const std::uint32_t taken = Q_StrCopyChars(piece, text + done, most + 1, Q_CurrentEncoding());
        if (taken > 0) {
            Q_ConsoleHook(piece);
        }
        done += std::max(taken, 1U);  // skips a zero byte, which ends what Q_StrCopyChars copies
    }
    return count;
}

std::uint32_t WriteToChannel(void* context, const char* text, std::uint32_t count) {
    return Q_ChannelWrite(text, 1, count, static_cast<Q_Channel*>(context));
}

}  // namespace

std::uint32_t Q_FormatCore(Q_FormatSink sink, void* context, const char* format, std::va_list arguments) {
    Output output{sink, context, 0};
    FormatArguments own;
    va_copy(own.list, arguments);
    Format(output, format == nullptr ? "" : format, own);
    va_end(own.list);
    return output.written;
}

void Q_FormatText(char* destination, const char* format, ...) {
    if (destination == nullptr) {
        return;
    }
    BufferContext buffer{destination, kBufferCapacity};
    std::va_list arguments;
    va_start(arguments, format);
    Q_FormatCore(WriteToBuffer, &buffer, format, arguments);
    va_end(arguments);
    *buffer.at = '\0';
}

std::uint32_t Q_Print(Q_Channel* channel, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::uint32_t taken =
        Q_FormatCore(channel == nullptr ? WriteToConsole : WriteToChannel, channel, format, arguments);
    va_end(arguments);
    return taken;
}

}  // namespace ventrix
