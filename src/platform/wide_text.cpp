#include "platform/wide_text.h"

#include <cstdint>

namespace ventrix::platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// One decoded character. A malformed sequence gives the replacement character and length 1.
struct Decoded {
    char32_t character;
    std::size_t length;
};

std::size_t SequenceLength(unsigned char lead) {
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        return 4;
    }
    return 0;
}

bool InRange(char32_t character, std::size_t length) {
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    return character >= kLeast[length] && character <= 0x10FFFF && !surrogate;
}

Decoded DecodeAt(std::string_view text, std::size_t at) {
    const Decoded bad = {kReplacement, 1};
    const auto lead = static_cast<unsigned char>(text[at]);
    const std::size_t length = SequenceLength(lead);
    if (length == 0 || at + length > text.size()) {
        return bad;
    }
    char32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[at + i]);
        if ((next & 0xC0) != 0x80) {
            return bad;
        }
        character = (character << 6) | (next & 0x3Fu);
    }
    return InRange(character, length) ? Decoded{character, length} : bad;
}

void AppendWide(std::u16string& out, char32_t character) {
    if (character < 0x10000) {
        out += static_cast<char16_t>(character);
        return;
    }
    out += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
    out += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
}

void AppendUtf8(std::string& out, char32_t character) {
    const auto continuation = [&](int shift) {
        out += static_cast<char>(0x80 | ((character >> shift) & 0x3F));
    };
    if (character < 0x80) {
        out += static_cast<char>(character);
    } else if (character < 0x800) {
        out += static_cast<char>(0xC0 | (character >> 6));
        continuation(0);
    } else if (character < 0x10000) {
        out += static_cast<char>(0xE0 | (character >> 12));
        continuation(6);
        continuation(0);
    } else {
        out += static_cast<char>(0xF0 | (character >> 18));
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

bool IsHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace

std::u16string WideFromUtf8(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const Decoded decoded = DecodeAt(text, at);
        AppendWide(out, decoded.character);
        at += decoded.length;
    }
    return out;
}

std::string Utf8FromWide(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char16_t unit = text[at];
        if (IsHighSurrogate(unit) && at + 1 < text.size() && IsLowSurrogate(text[at + 1])) {
            const auto high = static_cast<char32_t>(unit - 0xD800);
            AppendUtf8(out, 0x10000 + (high << 10) + static_cast<char32_t>(text[++at] - 0xDC00));
        } else {
            AppendUtf8(out, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : unit);
        }
    }
    return out;
}

bool IsUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const Decoded decoded = DecodeAt(text, at);
        if (decoded.character == kReplacement && decoded.length == 1) {
            return false;
        }
        at += decoded.length;
    }
    return true;
}

}  // namespace ventrix::platform
