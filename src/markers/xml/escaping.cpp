#include "markers/xml/escaping.h"

#include <cstring>

namespace ventrix::xml {

// The texts are short and full of markup: a branch for each byte would be guessed wrong too often, and an
// append for each run between two escapes costs more than the run. So each byte has its entry written whole,
// and the next one begins where that one ends.
void AppendEscaped(std::string& out, std::string_view text, const EscapeTable& table) {
    constexpr std::size_t kPieceSize = 4096;  // What room is made for is cleared first.
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, kPieceSize);
        const std::size_t before = out.size();
        out.resize(before + piece.size() * sizeof(Escape));
        char* to = out.data() + before;
        for (const char byte : piece) {
            const Escape& escape = table[static_cast<unsigned char>(byte)];
            std::memcpy(to, &escape, sizeof escape);
            to += escape.length;
        }
        out.resize(static_cast<std::size_t>(to - out.data()));
        text.remove_prefix(piece.size());
    }
}

}  // namespace ventrix::xml
