#include "markers/xml/characters.h"

#include <algorithm>

namespace ventrix::xml {

std::size_t CharacterLength(std::string_view text) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned lead = byte(0);
    if (lead < 0x80) {
        return lead >= 0x20 || lead == '\t' || lead == '\n' || lead == '\r' ? 1 : 0;
    }
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    const unsigned second = byte(1);
    const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    const bool surrogate = lead == 0xED && second >= 0xA0;
    const bool beyond = lead == 0xF4 && second >= 0x90;
    const bool nonCharacter = lead == 0xEF && second == 0xBF && byte(2) >= 0xBE;
    return overlong || surrogate || beyond || nonCharacter ? 0 : length;
}

bool IsPlainName(std::string_view name) {
    const std::size_t colon = name.find(':');
    const auto isLocal = [](std::string_view part) {
        return !part.empty() && (ClassOf(part[0]) & kNameStart) != 0 &&
               part.find(':') == std::string_view::npos;
    };
    const bool parts = colon == std::string_view::npos
                           ? isLocal(name)
                           : isLocal(name.substr(0, colon)) && isLocal(name.substr(colon + 1));
    return parts && std::ranges::all_of(name, [](char c) { return (ClassOf(c) & kNameByte) != 0; });
}

bool HoldsOnlyCharacters(std::string_view text) {
    for (std::size_t at = SkipPlain(text, 0); at < text.size(); at = SkipPlain(text, at)) {
        const std::size_t length = CharacterLength(text.substr(at, 4));
        if (length == 0) {
            return false;
        }
        at += length;
    }
    return true;
}

}  // namespace ventrix::xml
