// What XML says of single characters and bytes. Texts are UTF-8.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace ventrix::xml {

/// The bytes of the character at the front of a text: 0 if they are no character that XML can hold.
std::size_t CharacterLength(std::string_view text);

enum ByteClass : std::uint8_t {
    NameByte = 1,    ///< May stand in a name. Of ASCII only; a name may hold other characters too.
    NameStart = 2,   ///< May begin one.
    Solid = 4,       ///< No white space.
    TextStop = 8,    ///< What a scan for the end of a text has to look at.
    ValueStop = 16,  ///< The same for an attribute's value.
};

namespace detail {

constexpr bool IsLetter(unsigned c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr std::uint8_t ClassOf(unsigned c) {
    const bool blank = c == ' ' || c == '\t' || c == '\n' || c == '\r';
    const bool start = IsLetter(c) || c == '_' || c == ':';
    const bool name = start || (c >= '0' && c <= '9') || c == '-' || c == '.';
    const bool odd = c >= 0x80 || (c < 0x20 && !blank);
    const bool text = odd || c == '<' || c == '&' || c == ']' || c == '\r';
    const bool value = odd || c == '<' || c == '&' || c == '"' || c == '\'';
    return static_cast<std::uint8_t>((name ? NameByte : 0) | (start ? NameStart : 0) | (blank ? 0 : Solid) |
                                     (text ? TextStop : 0) | (value ? ValueStop : 0));
}

constexpr std::array<std::uint8_t, 256> MakeClasses() {
    std::array<std::uint8_t, 256> classes{};
    for (unsigned c = 0; c < classes.size(); ++c) {
        classes[c] = ClassOf(c);
    }
    return classes;
}

inline constexpr std::array<std::uint8_t, 256> classes = MakeClasses();

}  // namespace detail

/// The ByteClass bits of a byte.
inline std::uint8_t ClassOf(char byte) {
    return detail::classes[static_cast<unsigned char>(byte)];
}

/// True for white space.
inline bool IsBlank(char byte) {
    return (ClassOf(byte) & Solid) == 0;
}

}  // namespace ventrix::xml
