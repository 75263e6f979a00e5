#include "kit/resource_strings.h"

#include <charconv>
#include <cstring>
#include <vector>

#include "kit/text/characters.h"
#include "kit/text/convert.h"
#include "kit/text/encodings.h"
#include "kit/text/language.h"
#include "kit/text/strings.h"
#include "platform/module.h"

namespace ventrix {
namespace {

void* resourceModule = nullptr;

bool IsUtf8Current() {
    return Q_CurrentEncoding() == kUtf8Encoding;
}

bool LoadAsUtf8(std::uint32_t id, char* buffer, std::uint32_t size) {
    std::vector<char16_t> wide(size);
    if (platform::LoadWideString(resourceModule, id, wide.data(), static_cast<int>(size)) < 1) {
        return false;
    }
    wide.back() = 0;
    const Q_String text(Q_ConvertByCode(wide.data(), kCodeUtf16, kCodeUtf8, false, false));
    Q_StrCopyChars(buffer, text.get(), size, kUtf8Encoding);
    return true;
}

bool Load(std::uint32_t id, char* buffer, std::uint32_t size) {
    if (IsUtf8Current()) {
        return LoadAsUtf8(id, buffer, size);
    }
    return platform::LoadNarrowString(resourceModule, id, buffer, static_cast<int>(size)) >= 1;
}

// Whether an escape begins at the text; if so, stores the byte that it names.
bool ReadEscape(const char* text, unsigned char& byte) {
    if (text[0] != '%' || Q_StrChr("BLM", text[1]) == nullptr || Q_StrLen(text) < 4) {
        return false;
    }
    const auto read = std::from_chars(text + 2, text + 4, byte, 16);
    return read.ec == std::errc() && read.ptr == text + 4;
}

// Writes the expansion of an escape and returns its length. It never exceeds the four bytes of the escape, so
// expanding in place cannot overtake the text that is still to be read.
std::uint32_t WriteEscaped(char* output, char kind, unsigned char byte) {
    const char raw[] = {static_cast<char>(byte), '\0'};
    if (kind == 'L' || !IsUtf8Current()) {
        *output = raw[0];
        return 1;
    }
    const std::int32_t code = kind == 'B' ? Q_SystemEncodingCode() : kCodeRoman;
    const Q_String text(Q_ConvertByCode(raw, code, kCodeUtf8, false, false));
    const std::uint32_t length = Q_StrLen(text.get());
    std::memcpy(output, text.get(), length);
    return length;
}

}  // namespace

void Q_SetResourceModule(void* module) {
    resourceModule = module;
}

int Q_LoadResourceString(std::uint32_t id, char* buffer, std::uint32_t size) {
    if (buffer == nullptr || size == 0) {
        return 1;
    }
    if (!Load(id, buffer, size)) {
        *buffer = '\0';
        return 1;
    }
    Q_ExpandByteEscapes(buffer);
    return 0;
}

void Q_ExpandByteEscapes(char* text) {
    if (text == nullptr) {
        return;
    }
    char* output = text;
    while (*text != '\0') {
        unsigned char byte = 0;
        if (ReadEscape(text, byte)) {
            output += WriteEscaped(output, text[1], byte);
            text += 4;
        } else {
            *output++ = *text++;
        }
    }
    *output = '\0';
}

}  // namespace ventrix
