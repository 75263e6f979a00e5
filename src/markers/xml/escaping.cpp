#include "markers/xml/escaping.h"

#include <cstring>

namespace ventrix::xml {

// The strings are short and full of markup. A branch per byte would often be mispredicted, and an append per
// run between two escapes costs more than the run. So the whole entry of each byte is copied, all 16 bytes of
// it, and the next entry overwrites what exceeds the escape's length.
void AppendEscaped(std::string& out, std::string_view text, const EscapeTable& table) {
    // resize() zeroes the new bytes. In small pieces they stay in the cache.
    constexpr std::size_t kPieceSize = 4096;
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, kPieceSize);
        const std::size_t start = out.size();
        out.resize(start + piece.size() * sizeof(Escape));
        char* to = out.data() + start;
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
