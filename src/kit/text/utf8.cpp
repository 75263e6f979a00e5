#include "kit/text/utf8.h"

namespace ventrix {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

unsigned Value(char byte) {
    return static_cast<unsigned char>(byte);
}

bool CanLead(char byte) {
    return Value(byte) >= 0xC2 && Value(byte) <= 0xF4;
}

// The payload bits of the lead byte of a sequence of this length.
unsigned LeadBits(char lead, std::uint32_t length) {
    constexpr unsigned kMasks[] = {0xFF, 0x1F, 0x0F, 0x07};
    return Value(lead) & kMasks[length - 1];
}

char32_t Decode(const char* text) {
    const std::uint32_t length = Q_Utf8Length(*text);
    char32_t value = LeadBits(*text, length);
    bool hasMore = true;
    for (std::uint32_t index = 1; index < length; ++index) {
        hasMore = hasMore && text[index] != '\0';
        value = value << 6 | (hasMore ? Value(text[index]) & 0x3F : 0);
    }
    return value;
}

}  // namespace

bool Q_IsContinuation(char byte) {
    return (Value(byte) & 0xC0) == 0x80;
}

std::uint32_t Q_Utf8Length(char lead) {
    if (!CanLead(lead)) {
        return 1;
    }
    if (Value(lead) < 0xE0) {
        return 2;
    }
    return Value(lead) < 0xF0 ? 3 : 4;
}

bool Q_IsValidUtf8(const char* text) {
    if (text == nullptr) {
        return false;
    }
    while (*text != '\0') {
        if (Value(*text) >= 0x80 && !CanLead(*text)) {
            return false;
        }
        const std::uint32_t length = Q_Utf8Length(*text);
        for (std::uint32_t index = 1; index < length; ++index) {
            if (!Q_IsContinuation(text[index])) {
                return false;
            }
        }
        text += length;
    }
    return true;
}

void Q_Utf8Next(const char** text) {
    for (std::uint32_t left = Q_Utf8Length(**text); left > 0 && **text != '\0'; --left) {
        ++*text;
    }
}

int Q_Utf8ToUnits(const char* text, char16_t (&units)[2]) {
    char32_t value = Decode(text);
    if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
        value = kReplacement;
    }
    if (value <= 0xFFFF) {
        units[0] = static_cast<char16_t>(value);
        return 1;
    }
    units[0] = static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
    units[1] = static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF));
    return 2;
}

}  // namespace ventrix
