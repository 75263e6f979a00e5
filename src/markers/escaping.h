// Writes texts with escapes in the place of some of their bytes.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace ventrix {

/// What stands for a byte: an escape, or the byte itself.
struct Escape {
    std::array<char, 7> text;
    std::uint8_t length;
};

/// By byte.
using EscapeTable = std::array<Escape, 256>;

/// Escapes have seven bytes at most.
template <std::size_t Count>
constexpr EscapeTable MakeEscapeTable(const std::array<std::pair<char, std::string_view>, Count>& escapes) {
    EscapeTable table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        table[byte] = {{static_cast<char>(byte)}, 1};
    }
    for (const auto& [byte, escape] : escapes) {
        Escape& entry = table[static_cast<unsigned char>(byte)];
        entry.length = static_cast<std::uint8_t>(escape.size());
        for (std::size_t i = 0; i < escape.size(); ++i) {
            entry.text[i] = escape[i];
        }
    }
    return table;
}

void AppendEscaped(std::string& out, std::string_view text, const EscapeTable& table);

}  // namespace ventrix
