// Writes one of ICU's own converters as a .ucm file under the name of a host encoding, as input for makeconv.
// Arguments: source converter, new name, lead bytes, trail bytes. Byte ranges have the form "81-9f,e0-fc";
// both are empty for a single-byte encoding. Characters outside these ranges are omitted.
#include <unicode/ucnv.h>

#include <bitset>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using ByteSet = std::bitset<256>;

[[noreturn]] void Fail(const std::string& message) {
    std::fprintf(stderr, "write_ucm: %s\n", message.c_str());
    std::exit(1);
}

UConverter* OpenConverter(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name, &status);
    ucnv_setFallback(converter, true);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status) != 0) {
        Fail(std::string("ICU cannot open ") + name + ": " + u_errorName(status));
    }
    return converter;
}

ByteSet ReadRanges(const std::string& text) {
    ByteSet bytes;
    for (std::size_t at = 0; at + 5 <= text.size(); at += 6) {
        const unsigned long first = std::stoul(text.substr(at, 2), nullptr, 16);
        const unsigned long last = std::stoul(text.substr(at + 3, 2), nullptr, 16);
        for (unsigned long byte = first; byte <= last; ++byte) {
            bytes.set(byte);
        }
    }
    return bytes;
}

unsigned Value(char byte) {
    return static_cast<unsigned char>(byte);
}

bool IsInside(const std::string& bytes, const ByteSet& leads, const ByteSet& trails) {
    if (bytes.size() == 1) {
        return !leads.test(Value(bytes[0]));
    }
    return bytes.size() == 2 && leads.test(Value(bytes[0])) && trails.test(Value(bytes[1]));
}

// The bytes of a character; empty if the encoding does not contain it.
std::string BytesOf(UConverter* converter, UChar unit) {
    char bytes[8];
    UErrorCode status = U_ZERO_ERROR;
    const int length = ucnv_fromUChars(converter, bytes, sizeof bytes, &unit, 1, &status);
    return U_FAILURE(status) != 0 ? std::string() : std::string(bytes, static_cast<std::size_t>(length));
}

// The character that the bytes encode, as "<U0041>"; empty if they are not valid.
std::string CharacterOf(UConverter* converter, const std::string& bytes) {
    UChar units[4];
    UErrorCode status = U_ZERO_ERROR;
    const int count =
        ucnv_toUChars(converter, units, 4, bytes.data(), static_cast<int>(bytes.size()), &status);
    if (U_FAILURE(status) != 0 || count != 1) {
        return {};
    }
    char name[16];
    std::snprintf(name, sizeof name, "<U%04X>", static_cast<unsigned>(units[0]));
    return name;
}

std::string Escaped(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02X", Value(byte));
        text += escape;
    }
    return text;
}

// One row of a state table: byte ranges, in which lead bytes are marked with the next state.
std::string StateRow(const ByteSet& bytes, const ByteSet& leads) {
    std::string row = "<icu:state>";
    const char* comma = " ";
    for (std::size_t first = 0; first < 256;) {
        std::size_t end = first;
        while (end < 256 && bytes.test(end) == bytes.test(first) && leads.test(end) == leads.test(first)) {
            ++end;
        }
        if (bytes.test(first)) {
            char range[16];
            std::snprintf(range, sizeof range, "%s%zx-%zx%s", comma, first, end - 1,
                          leads.test(first) ? ":1" : "");
            row += range;
            comma = ", ";
        }
        first = end;
    }
    return row + "\n";
}

void PrintHead(UConverter* converter, const char* name, const ByteSet& leads, const ByteSet& trails) {
    char substitute[8];
    std::int8_t length = sizeof substitute;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_getSubstChars(converter, substitute, &length, &status);
    std::printf(
        "<code_set_name> \"%s\"\n<mb_cur_min> 1\n<mb_cur_max> %d\n<uconv_class> \"%s\"\n<subchar> %s\n", name,
        leads.any() ? 2 : 1, leads.any() ? "MBCS" : "SBCS",
        Escaped(std::string(substitute, static_cast<std::size_t>(length))).c_str());
    if (leads.any()) {
        std::printf("%s%s", StateRow(~ByteSet(), leads).c_str(), StateRow(trails, ByteSet()).c_str());
    }
}

// All characters, which in these encodings are in the basic plane: round-trip mappings (0) and those from
// Unicode only (1).
void PrintFromUnicode(UConverter* converter, const ByteSet& leads, const ByteSet& trails) {
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const std::string bytes = BytesOf(converter, static_cast<UChar>(unit));
        if (!IsInside(bytes, leads, trails)) {
            continue;
        }
        char name[16];
        std::snprintf(name, sizeof name, "<U%04X>", unit);
        const int way = CharacterOf(converter, bytes) == name ? 0 : 1;
        std::printf("%s %s |%d\n", name, Escaped(bytes).c_str(), way);
    }
}

// Byte sequences that decode to a character which is encoded differently: mappings to Unicode only (3).
void PrintToUnicodeOnly(UConverter* converter, const std::string& bytes) {
    const std::string name = CharacterOf(converter, bytes);
    if (name.empty()) {
        return;
    }
    const auto unit = static_cast<UChar>(std::stoul(name.substr(2, 4), nullptr, 16));
    if (BytesOf(converter, unit) != bytes) {
        std::printf("%s %s |3\n", name.c_str(), Escaped(bytes).c_str());
    }
}

void PrintToUnicode(UConverter* converter, const ByteSet& leads, const ByteSet& trails) {
    for (unsigned first = 0; first < 256; ++first) {
        if (!leads.test(first)) {
            PrintToUnicodeOnly(converter, std::string(1, static_cast<char>(first)));
            continue;
        }
        for (unsigned second = 0; second < 256; ++second) {
            if (trails.test(second)) {
                PrintToUnicodeOnly(converter, {static_cast<char>(first), static_cast<char>(second)});
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        Fail("four arguments: source converter, new name, lead bytes, trail bytes");
    }
    UConverter* converter = OpenConverter(argv[1]);
    const ByteSet leads = ReadRanges(argv[3]);
    const ByteSet trails = ReadRanges(argv[4]);
    PrintHead(converter, argv[2], leads, trails);
    std::printf("CHARMAP\n");
    PrintFromUnicode(converter, leads, trails);
    PrintToUnicode(converter, leads, trails);
    std::printf("END CHARMAP\n");
    ucnv_close(converter);
    return 0;
}
