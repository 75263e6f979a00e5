#include "desk/toolkit/java_text.h"

#include <libxml/xmlstring.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>

#include "platform/native_roots.h"

namespace ventrix::desk {
namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

/// One character of a string and the bytes that it takes there.
struct Character {
    std::uint32_t code = 0;
    std::size_t bytes = 1;
};

Character CharacterAt(std::string_view text, std::size_t at) {
    int bytes = static_cast<int>(std::min<std::size_t>(text.size() - at, 4));
    const int code = xmlGetUTF8Char(reinterpret_cast<const unsigned char*>(text.data() + at), &bytes);
    return code < 0 ? Character{kReplacement, 1}
                    : Character{static_cast<std::uint32_t>(code), static_cast<std::size_t>(bytes)};
}

bool IsOneOf(std::uint32_t code, std::string_view signs) {
    return code < 0x80 && (std::isalnum(static_cast<int>(code)) != 0 ||
                           signs.find(static_cast<char>(code)) != std::string_view::npos);
}

void AppendUnit(std::string& text, std::uint32_t unit) {
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(unit));
    text += escape;
}

void AppendPropertyCharacter(std::string& text, std::uint32_t code) {
    if (IsOneOf(code, "/._-")) {
        text += static_cast<char>(code);
    } else if (code < 0x10000) {
        AppendUnit(text, code);
    } else {
        AppendUnit(text, 0xD800 + ((code - 0x10000) >> 10));
        AppendUnit(text, 0xDC00 + ((code - 0x10000) & 0x3FF));
    }
}

/// Java escapes control characters and spaces beyond ASCII too.
bool IsSpaceOrControl(std::uint32_t code) {
    return (code >= 0x80 && code <= 0xA0) || code == 0x1680 || (code >= 0x2000 && code <= 0x200A) ||
           code == 0x2028 || code == 0x2029 || code == 0x202F || code == 0x205F || code == 0x3000;
}

}  // namespace

std::string PropertyLine(std::string_view name, std::string_view value) {
    std::string line = std::string(name) + '=';
    for (std::size_t at = 0; at < value.size();) {
        const Character character = CharacterAt(value, at);
        AppendPropertyCharacter(line, character.code);
        at += character.bytes;
    }
    return line + '\n';
}

std::string JavaFileUri(const NativePath& path) {
    std::string uri = platform::NativeRootLength(path.utf8) > 1 ? "file:/" : "file:";
    for (std::size_t at = 0; at < path.utf8.size();) {
        const Character character = CharacterAt(path.utf8, at);
        const std::string_view bytes = std::string_view(path.utf8).substr(at, character.bytes);
        const bool stays = character.code < 0x80 ? IsOneOf(character.code, "_-!.~'()*:@&=+$,;/")
                                                 : !IsSpaceOrControl(character.code);
        for (const char byte : bytes) {
            char escape[4];
            std::snprintf(escape, sizeof escape, "%%%02X",
                          static_cast<unsigned>(static_cast<unsigned char>(byte)));
            uri += stays ? std::string(1, byte) : std::string(escape);
        }
        at += character.bytes;
    }
    return uri;
}

}  // namespace ventrix::desk
