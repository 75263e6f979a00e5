#include "kit/text/characters.h"

#include <algorithm>

#include "kit/text/encodings.h"
#include "kit/text/strings.h"
#include "kit/text/utf8.h"

namespace ventrix {
namespace {

std::uint32_t CutUtf8(const char* text, std::uint32_t length) {
    // No character is longer; in malformed text the search has to stop somewhere.
    constexpr std::uint32_t kFarthest = 4;
    std::uint32_t position = length;
    while (position > 0 && length - position < kFarthest && Q_IsContinuation(text[position])) {
        --position;
    }
    return position;
}

std::uint32_t CutPairs(const char* text, std::uint32_t length, std::int32_t encoding) {
    std::uint32_t position = 0;
    while (position < length) {
        position += Q_CharacterLength(text + position, encoding);
    }
    return position > length ? length - 1 : length;
}

}  // namespace

std::uint32_t Q_CharacterLength(const char* text, std::int32_t encoding) {
    if (encoding == kUtf8Encoding) {
        const char* next = text;
        Q_Utf8Next(&next);
        return static_cast<std::uint32_t>(next - text);
    }
    if (*text == '\0') {
        return 0;
    }
    return Q_IsBytePair(Q_EncodingAt(encoding), text[0], text[1]) ? 2 : 1;
}

std::uint32_t Q_CutPoint(const char* text, std::uint32_t length, std::int32_t encoding) {
    if (Q_StrLen(text) <= length) {
        return length;
    }
    return encoding == kUtf8Encoding ? CutUtf8(text, length) : CutPairs(text, length, encoding);
}

std::uint32_t Q_StrCopyChars(char* destination, const char* text, std::uint32_t size, std::int32_t encoding) {
    const std::uint32_t limit = size == 0 ? 0 : size - 1;
    return Q_StrCopyN(destination, text, Q_CutPoint(text, limit, encoding) + 1);
}

std::uint32_t Q_StrCatChars(char* destination, const char* text, std::uint32_t size, std::int32_t encoding) {
    const std::uint32_t length = Q_StrLen(destination);
    if (destination == nullptr || length >= size) {
        return length;
    }
    return length + Q_StrCopyChars(destination + length, text, size - length, encoding);
}

const char* Q_StrFindLastChar(const char* text, int character, std::int32_t encoding) {
    const char byte = static_cast<char>(character);
    if (text == nullptr || byte == '\0') {
        return nullptr;
    }
    const char* found = nullptr;
    while (*text != '\0') {
        const std::uint32_t length = Q_CharacterLength(text, encoding);
        if (length == 1 && *text == byte) {
            found = text;
        }
        text += length;
    }
    return found;
}

}  // namespace ventrix
