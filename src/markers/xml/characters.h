// The classes of bytes and characters that XML distinguishes, and scans of UTF-8 text for them.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace ventrix::xml {

/// The length in bytes of the first character; 0 if it is not a character that XML allows, or not UTF-8.
std::size_t CharacterLength(std::string_view text);

/// True for a name of ASCII with at most one colon, which has a name on either side.
bool IsPlainName(std::string_view name);

/// True if the text consists of characters that XML allows.
bool HoldsOnlyCharacters(std::string_view text);

enum ByteClass : std::uint8_t {
    kNameByte = 1,        ///< ASCII that may occur in a name. A name may have characters beyond ASCII, too.
    kNameStart = 2,       ///< ASCII that may begin a name.
    kWhitespace = 4,      ///< Space, tab, line feed, carriage return.
    kTextStop = 8,        ///< Where a scan for the end of a text node has to stop and look.
    kValueStop = 16,      ///< The same for an attribute value.
    kLocalNameByte = 32,  ///< A kNameByte other than the colon.
    kNameEnd = 64,        ///< What ends a name in a tag: whitespace, ">", "/", "=".
    kIndentation = 128,   ///< Space, tab, line feed.
};

namespace detail {

constexpr bool IsLetter(unsigned c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr std::uint8_t ClassOf(unsigned c) {
    const bool whitespace = c == ' ' || c == '\t' || c == '\n' || c == '\r';
    const bool start = IsLetter(c) || c == '_' || c == ':';
    const bool name = start || (c >= '0' && c <= '9') || c == '-' || c == '.';
    const bool odd = c >= 0x80 || (c < 0x20 && !whitespace);
    const bool text = odd || c == '<' || c == '&' || c == ']' || c == '\r';
    const bool value = odd || c == '<' || c == '&' || c == '"' || c == '\'';
    const bool nameEnd = whitespace || c == '>' || c == '/' || c == '=';
    return static_cast<std::uint8_t>((name ? kNameByte : 0) | (start ? kNameStart : 0) |
                                     (whitespace ? kWhitespace : 0) | (text ? kTextStop : 0) |
                                     (value ? kValueStop : 0) | (name && c != ':' ? kLocalNameByte : 0) |
                                     (nameEnd ? kNameEnd : 0) | (whitespace && c != '\r' ? kIndentation : 0));
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

/// In a word of ASCII, sets the high bit of the lowest byte that equals `byte`. Bytes above it may have
/// theirs set as well, but none below.
constexpr std::uint64_t Matches(std::uint64_t word, unsigned char byte) {
    return (word ^ Each(byte)) - Each(1);
}

/// The same for a control character.
constexpr std::uint64_t MatchesControl(std::uint64_t word) {
    return word - Each(' ');
}

}  // namespace detail

/// The first position at or after `at` of a byte that is beyond ASCII, a control character or one of `bytes`.
/// Looks at eight bytes at a time and leaves up to seven at the end.
template <typename... Bytes>
std::size_t SkipAllBut(std::string_view text, std::size_t at, Bytes... bytes) {
    using detail::Each;
    using detail::Matches;
    using detail::MatchesControl;
    for (; at + sizeof(std::uint64_t) <= text.size(); at += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + at, sizeof word);
        // A byte beyond ASCII counts too, so that none below the lowest one found is missed.
        const std::uint64_t found =
            ((word | MatchesControl(word)) | ... | Matches(word, static_cast<unsigned char>(bytes))) &
            Each(0x80);
        if (found != 0) {
            const bool isLowFirst = std::endian::native == std::endian::little;
            return isLowFirst ? at + static_cast<std::size_t>(std::countr_zero(found)) / 8 : at;
        }
    }
    return at;
}

/// The first position at or after `at` where a scan of a text node may have to stop: anything but letters,
/// digits, spaces and most punctuation. Leaves up to seven bytes at the end.
inline std::size_t SkipPlain(std::string_view text, std::size_t at) {
    return SkipAllBut(text, at, '&', '<', ']');
}

/// The position of the first of these bytes at or after `from`; npos without one. Many searches for marker
/// words and references are over within a few bytes, where a call of the C library's search costs as much as
/// the search. That of Windows may look at single bytes.
template <typename... Bytes>
std::size_t FindAnyByte(std::string_view text, std::size_t from, Bytes... bytes) {
    using detail::Each;
    // The lowest high bit is that of an equal byte. Those above it may be wrong.
    const auto matches = [](std::uint64_t word, char byte) {
        const std::uint64_t difference = word ^ Each(static_cast<unsigned char>(byte));
        return (difference - Each(1)) & ~difference & Each(0x80);
    };
    std::size_t at = from;
    for (; at + sizeof(std::uint64_t) <= text.size(); at += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + at, sizeof word);
        const std::uint64_t found = (matches(word, bytes) | ...);
        if (found != 0) {
            if (std::endian::native != std::endian::little) {
                break;
            }
            return at + static_cast<std::size_t>(std::countr_zero(found)) / 8;
        }
    }
    while (at < text.size() && ((text[at] != bytes) && ...)) {
        ++at;
    }
    return at < text.size() ? at : std::string_view::npos;
}

/// As text.find(byte, from).
inline std::size_t FindByte(std::string_view text, char byte, std::size_t from = 0) {
    return FindAnyByte(text, from, byte);
}

inline bool IsWhitespace(char byte) {
    return (ClassOf(byte) & kWhitespace) != 0;
}

/// As text.find(wanted, from), for a string that is not empty.
inline std::size_t Find(std::string_view text, std::string_view wanted, std::size_t from = 0) {
    while ((from = FindByte(text, wanted.front(), from)) != std::string_view::npos &&
           !text.substr(from).starts_with(wanted)) {
        ++from;
    }
    return from;
}

/// The position past the first `delimiter` at or after `from`; npos without one.
inline std::size_t FindEnd(std::string_view text, std::string_view delimiter, std::size_t from) {
    const std::size_t found = Find(text, delimiter, from);
    return found == std::string_view::npos ? found : found + delimiter.size();
}

}  // namespace ventrix::xml
