// Escapes bytes of a string by a table. A table is made at compile time.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace ventrix::xml {

/// What replaces a byte: its escape, or the byte itself.
struct Escape {
    std::array<char, 15> text;
    std::uint8_t length;

    constexpr void Append(std::string_view piece) {
        for (const char c : piece) {
            text[length++] = c;
        }
    }
};

/// Indexed by byte.
using EscapeTable = std::array<Escape, 256>;

/// The table of these escapes, each of at most 15 bytes.
template <std::size_t Count>
constexpr EscapeTable MakeEscapeTable(const std::array<std::pair<char, std::string_view>, Count>& escapes) {
    EscapeTable table{};
    for (const auto& [byte, escape] : escapes) {
        table[static_cast<unsigned char>(byte)].Append(escape);
    }
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        if (table[byte].length == 0) {
            const char itself = static_cast<char>(byte);
            table[byte].Append({&itself, 1});
        }
    }
    return table;
}

/// The table that escapes with `first` and the result with `second`.
constexpr EscapeTable Combine(const EscapeTable& first, const EscapeTable& second) {
    EscapeTable table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        for (std::size_t i = 0; i < first[byte].length; ++i) {
            const Escape& again = second[static_cast<unsigned char>(first[byte].text[i])];
            table[byte].Append({again.text.data(), again.length});
        }
    }
    return table;
}

/// The five characters that XML reserves, with their predefined entities.
inline constexpr std::array<std::pair<char, std::string_view>, 5> kMarkupCharacters = {{
    {'&', "&amp;"},
    {'<', "&lt;"},
    {'>', "&gt;"},
    {'"', "&quot;"},
    {'\'', "&apos;"},
}};
inline constexpr EscapeTable kMarkupEscapes = MakeEscapeTable(kMarkupCharacters);

struct NamedCharacter {
    char character;
    std::size_t length;  ///< Of the entity, from its "&" to past its ";"; 0 if there is none.
};

/// The predefined entity of this number at the start of the text. For a length that is known when this is
/// compiled, memcmp is no call, as starts_with would be.
template <std::size_t Index>
NamedCharacter EntityAt(std::string_view text) {
    constexpr std::string_view kEntity = kMarkupCharacters[Index].second;
    const bool isThere =
        text.size() >= kEntity.size() && std::memcmp(text.data(), kEntity.data(), kEntity.size()) == 0;
    return {kMarkupCharacters[Index].first, isThere ? kEntity.size() : 0};
}

/// The predefined entity at the start of the text.
inline NamedCharacter NamedCharacterAt(std::string_view text) {
    if (text.size() < sizeof "&lt;" - 1 || text[0] != '&') {
        return {'&', 0};
    }
    switch (text[1]) {
        case 'a':
            return text[2] == 'm' ? EntityAt<0>(text) : EntityAt<4>(text);
        case 'l':
            return EntityAt<1>(text);
        case 'g':
            return EntityAt<2>(text);
        case 'q':
            return EntityAt<3>(text);
        default:
            return {'&', 0};
    }
}

void AppendEscaped(std::string& out, std::string_view text, const EscapeTable& table);

}  // namespace ventrix::xml
