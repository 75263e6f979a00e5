// What XML says of single characters and bytes. Texts are UTF-8.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace ventrix::xml {

/// The bytes of the character at the front of a text: 0 if they are no character that XML can hold.
std::size_t CharacterLength(std::string_view text);

/// True for a text of ASCII without markup and control characters.
bool IsPlain(std::string_view text);

/// True for a text without bytes that XML cannot hold.
bool HoldsOnlyCharacters(std::string_view text);

enum ByteClass : std::uint8_t {
    kNameByte = 1,    ///< May stand in a name. Of ASCII only; a name may hold other characters too.
    kNameStart = 2,   ///< May begin one.
    kSolid = 4,       ///< No white space.
    kTextStop = 8,    ///< What a scan for the end of a text has to look at.
    kValueStop = 16,  ///< The same for an attribute's value.
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
    return static_cast<std::uint8_t>((name ? kNameByte : 0) | (start ? kNameStart : 0) |
                                     (blank ? 0 : kSolid) | (text ? kTextStop : 0) |
                                     (value ? kValueStop : 0));
}

constexpr std::array<std::uint8_t, 256> MakeClasses() {
    std::array<std::uint8_t, 256> classes{};
    for (unsigned c = 0; c < classes.size(); ++c) {
        classes[c] = ClassOf(c);
    }
    return classes;
}

inline constexpr std::array<std::uint8_t, 256> kClasses = MakeClasses();

}  // namespace detail

/// The ByteClass bits of a byte.
inline std::uint8_t ClassOf(char byte) {
    return detail::kClasses[static_cast<unsigned char>(byte)];
}

namespace detail {

constexpr std::uint64_t Each(unsigned char byte) {
    return std::uint64_t{0x0101010101010101} * byte;
}

/// In a word of ASCII, the lowest byte that equals `byte` has its high bit set. So may bytes above it, but
/// none below.
constexpr std::uint64_t Matches(std::uint64_t word, unsigned char byte) {
    return (word ^ Each(byte)) - Each(1);
}

/// The same for a control character.
constexpr std::uint64_t MatchesControl(std::uint64_t word) {
    return word - Each(' ');
}

}  // namespace detail

/// The first byte at or behind `at` that a scan of a text may have to look at: no letter, digit, space or
/// usual sign. Eight bytes at a time.
inline std::size_t SkipPlain(std::string_view text, std::size_t at) {
    using detail::Each;
    using detail::Matches;
    for (; at + sizeof(std::uint64_t) <= text.size(); at += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + at, sizeof word);
        // A byte beyond ASCII counts too, so that none below the lowest one found is missed.
        const std::uint64_t found = (word | detail::MatchesControl(word) | Matches(word, '&') |
                                     Matches(word, '<') | Matches(word, ']')) &
                                    Each(0x80);
        if (found != 0) {
            const bool isLowFirst = std::endian::native == std::endian::little;
            return isLowFirst ? at + static_cast<std::size_t>(std::countr_zero(found)) / 8 : at;
        }
    }
    return at;
}

/// True for white space.
inline bool IsBlank(char byte) {
    return (ClassOf(byte) & kSolid) == 0;
}

}  // namespace ventrix::xml
