#include <cstddef>

#include "platform/com.h"

namespace ventrix {
namespace {

constexpr std::u16string_view kShape = u"{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";

int DigitValue(char16_t c) {
    if (c >= u'0' && c <= u'9') {
        return c - u'0';
    }
    if (c >= u'A' && c <= u'F') {
        return c - u'A' + 10;
    }
    return c >= u'a' && c <= u'f' ? c - u'a' + 10 : -1;
}

bool HasShape(std::u16string_view text) {
    if (text.size() != kShape.size()) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (kShape[i] == u'X' ? DigitValue(text[i]) < 0 : text[i] != kShape[i]) {
            return false;
        }
    }
    return true;
}

/// The number that `count` digits from `at` on make.
std::uint32_t Number(std::u16string_view text, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        value = value * 16 + static_cast<std::uint32_t>(DigitValue(text[at + i]));
    }
    return value;
}

}  // namespace

HRESULT CLSIDFromString(const OLECHAR* text, CLSID* id) {
    if (id == nullptr) {
        return E_INVALIDARG;
    }
    *id = {};
    if (text == nullptr) {
        return S_OK;
    }
    const std::u16string_view digits = text;
    if (!HasShape(digits)) {
        return CO_E_CLASSSTRING;
    }
    constexpr std::size_t kBytesAt[8] = {20, 22, 25, 27, 29, 31, 33, 35};
    id->Data1 = Number(digits, 1, 8);
    id->Data2 = static_cast<std::uint16_t>(Number(digits, 10, 4));
    id->Data3 = static_cast<std::uint16_t>(Number(digits, 15, 4));
    for (std::size_t i = 0; i < 8; ++i) {
        id->Data4[i] = static_cast<std::uint8_t>(Number(digits, kBytesAt[i], 2));
    }
    return S_OK;
}

}  // namespace ventrix
