#include "iconv.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr unsigned kUnknownPage = 0;
constexpr unsigned kUtf16Little = 1200;  ///< The system's numbers, for which its functions do nothing.
constexpr unsigned kUtf16Big = 1201;
constexpr std::uint32_t kInvalid = 0xFFFFFFFF;

struct NamedPage {
    std::string_view name;  ///< In lower case, letters and digits only.
    unsigned number;
};

constexpr NamedPage kPages[] = {
    {"utf16le", kUtf16Little},
    {"utf16be", kUtf16Big},
    {"ibm367", 20127},
    {"macce", 10029},
    {"maccyrillic", 10007},
    {"xmaccyrillic", 10007},
    {"utf8", CP_UTF8},
    {"ascii", 20127},
    {"usascii", 20127},
    {"latin1", 28591},
    {"latin2", 28592},
    {"latin9", 28605},
    {"shiftjis", 932},
    {"sjis", 932},
    {"mskanji", 932},
    {"windows31j", 932},
    {"eucjp", 20932},
    {"gb2312", 936},
    {"gbk", 936},
    {"euccn", 936},
    {"euckr", 949},
    {"ksc56011987", 949},
    {"uhc", 949},
    {"big5", 950},
    {"koi8r", 20866},
    {"koi8u", 21866},
    {"tis620", 874},
    {"macintosh", 10000},
    {"mac", 10000},
};

std::string PlainName(std::string_view name) {
    std::string plain;
    for (const char c : name) {
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) {
            plain += c;
        } else if (c >= 'A' && c <= 'Z') {
            plain += static_cast<char>(c - 'A' + 'a');
        }
    }
    return plain;
}

/// The number that a name ends in after a prefix; 0 if it does not have this form.
unsigned NumberAfter(std::string_view name, std::string_view prefix) {
    if (!name.starts_with(prefix) || name.size() == prefix.size()) {
        return 0;
    }
    const std::string digits(name.substr(prefix.size()));
    const bool isNumber =
        std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
    return isNumber ? static_cast<unsigned>(std::strtoul(digits.c_str(), nullptr, 10)) : 0;
}

unsigned PageOf(const char* name) {
    const std::string plain = PlainName(name);
    for (const NamedPage& page : kPages) {
        if (page.name == plain) {
            return page.number;
        }
    }
    if (const unsigned part = NumberAfter(plain, "iso8859"); part >= 1 && part <= 16) {
        return 28590 + part;
    }
    for (const char* prefix : {"windows", "cp", "ibm"}) {
        if (const unsigned number = NumberAfter(plain, prefix)) {
            return IsValidCodePage(number) != 0 ? number : kUnknownPage;
        }
    }
    return kUnknownPage;
}

std::uint32_t CharacterOf(const wchar_t* units, int count) {
    if (count == 1) {
        return units[0];
    }
    const bool isPair = count == 2 && (units[0] & 0xFC00) == 0xD800 && (units[1] & 0xFC00) == 0xDC00;
    return isPair ? 0x10000 + ((units[0] & 0x3FFu) << 10) + (units[1] & 0x3FFu) : kInvalid;
}

/// The system gives bytes without a character a control or a private-use character, which is an error
/// elsewhere.
bool IsFillIn(unsigned page, unsigned byte, std::uint32_t character) {
    const bool isPrivate = character >= 0xE000 && character <= 0xF8FF;
    const bool isIso = page >= 28591 && page <= 28606;
    const bool isControl = byte >= 0x80 && character == byte && byte <= 0xA0 && !isIso;
    const bool isSpace = character == 0xA0;  // Which many pages have at this very byte.
    return isPrivate || (isControl && !isSpace);
}

/// A code page: the characters of its single bytes, which bytes lead a pair, and the bytes of the characters.
struct CodePage {
    unsigned number = 0;
    std::array<std::uint32_t, 256> characters = {};
    std::array<bool, 256> leads = {};
    std::vector<std::int16_t> bytes;  ///< Of characters below 0x10000 with one byte; -1 for the others.

    explicit CodePage(unsigned page) : number(page), bytes(0x10000, -1) {
        if (page == CP_UTF8 || page == kUtf16Little || page == kUtf16Big) {
            return;  // Is not used as a code page.
        }
        for (unsigned byte = 0; byte < 256; ++byte) {
            leads[byte] = IsDBCSLeadByteEx(number, static_cast<BYTE>(byte)) != 0;
            characters[byte] = leads[byte] ? kInvalid : Single(byte);
            if (characters[byte] != kInvalid) {
                bytes[characters[byte]] = static_cast<std::int16_t>(byte);
            }
        }
    }

    std::uint32_t Single(unsigned byte) const {
        if (number == 20127 && byte >= 0x80) {
            return kInvalid;
        }
        const char text = static_cast<char>(byte);
        wchar_t units[2];
        const int count = MultiByteToWideChar(number, MB_ERR_INVALID_CHARS, &text, 1, units, 2);
        return count != 1 || IsFillIn(number, byte, units[0]) ? kInvalid : units[0];
    }

    std::uint32_t Pair(const char* text) const {
        wchar_t units[2];
        const int count = MultiByteToWideChar(number, MB_ERR_INVALID_CHARS, text, 2, units, 2);
        return count == 0 ? kInvalid : CharacterOf(units, count);
    }

    /// Writes the bytes of a character. 0 if the page does not have it.
    std::size_t Encode(std::uint32_t character, char* text) const {
        if (character > 0xFFFF) {
            return 0;
        }
        if (bytes[character] >= 0) {
            text[0] = static_cast<char>(bytes[character]);
            return 1;
        }
        const bool hasPairs = std::find(leads.begin(), leads.end(), true) != leads.end();
        const auto unit = static_cast<wchar_t>(character);
        BOOL isMissing = FALSE;
        const int count = hasPairs ? WideCharToMultiByte(number, WC_NO_BEST_FIT_CHARS, &unit, 1, text, 2,
                                                         nullptr, &isMissing)
                                   : 0;
        return count == 2 && isMissing == 0 ? 2 : 0;
    }
};

bool IsUnicode(unsigned page) {
    return page == CP_UTF8 || page == kUtf16Little || page == kUtf16Big;
}

struct Converter {
    unsigned from;
    unsigned to;
    CodePage page;  ///< The one that is not Unicode, if there is one.
};

/// What reading one character gave.
struct Taken {
    std::uint32_t character = kInvalid;
    std::size_t length = 0;  ///< 0 if the input ends inside the character.
};

Taken TakeFromPage(const CodePage& page, const char* in, std::size_t left) {
    const auto byte = static_cast<unsigned char>(*in);
    if (!page.leads[byte]) {
        return {page.characters[byte], 1};
    }
    return left < 2 ? Taken{} : Taken{page.Pair(in), 2};
}

Taken TakeFromUtf8(const char* in, std::size_t left) {
    constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(*in);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0) {
        return {kInvalid, 1};
    }
    std::uint32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= left) {
            return {};
        }
        const auto next = static_cast<unsigned char>(in[i]);
        if ((next & 0xC0) != 0x80) {
            return {kInvalid, 1};
        }
        character = (character << 6) | (next & 0x3Fu);
    }
    const bool isValid =
        character >= kLeast[length] && character <= 0x10FFFF && (character & 0xFFFFF800) != 0xD800;
    return {isValid ? character : kInvalid, length};
}

std::uint32_t UnitAt(const char* in, bool isBig) {
    const auto first = static_cast<unsigned char>(in[0]);
    const auto second = static_cast<unsigned char>(in[1]);
    return isBig ? first * 256U + second : second * 256U + first;
}

Taken TakeFromUtf16(const char* in, std::size_t left, bool isBig) {
    if (left < 2) {
        return {};
    }
    const std::uint32_t unit = UnitAt(in, isBig);
    if ((unit & 0xF800) != 0xD800) {
        return {unit, 2};
    }
    if ((unit & 0xFC00) != 0xD800) {
        return {kInvalid, 2};
    }
    if (left < 4) {
        return {};
    }
    const std::uint32_t second = UnitAt(in + 2, isBig);
    const bool isPair = (second & 0xFC00) == 0xDC00;
    return {isPair ? 0x10000 + ((unit & 0x3FF) << 10) + (second & 0x3FF) : kInvalid, 4};
}

std::size_t PutUtf16(std::uint32_t character, bool isBig, char* text) {
    const auto put = [&](std::uint32_t unit, char* place) {
        place[isBig ? 0 : 1] = static_cast<char>(unit >> 8);
        place[isBig ? 1 : 0] = static_cast<char>(unit & 0xFF);
    };
    if (character < 0x10000) {
        put(character, text);
        return 2;
    }
    put(0xD800 + ((character - 0x10000) >> 10), text);
    put(0xDC00 + ((character - 0x10000) & 0x3FF), text + 2);
    return 4;
}

std::size_t PutUtf8(std::uint32_t character, char* text) {
    const auto continuation = [&](int shift) {
        return static_cast<char>(0x80 | ((character >> shift) & 0x3F));
    };
    if (character < 0x80) {
        text[0] = static_cast<char>(character);
        return 1;
    }
    if (character < 0x800) {
        text[0] = static_cast<char>(0xC0 | (character >> 6));
        text[1] = continuation(0);
        return 2;
    }
    if (character < 0x10000) {
        text[0] = static_cast<char>(0xE0 | (character >> 12));
        text[1] = continuation(6);
        text[2] = continuation(0);
        return 3;
    }
    text[0] = static_cast<char>(0xF0 | (character >> 18));
    text[1] = continuation(12);
    text[2] = continuation(6);
    text[3] = continuation(0);
    return 4;
}

Taken Take(const Converter& converter, const char* in, std::size_t left) {
    switch (converter.from) {
        case CP_UTF8:
            return TakeFromUtf8(in, left);
        case kUtf16Little:
        case kUtf16Big:
            return TakeFromUtf16(in, left, converter.from == kUtf16Big);
        default:
            return TakeFromPage(converter.page, in, left);
    }
}

/// Writes a character in at most four bytes. 0 if the encoding does not have it.
std::size_t Put(const Converter& converter, std::uint32_t character, char* text) {
    switch (converter.to) {
        case CP_UTF8:
            return PutUtf8(character, text);
        case kUtf16Little:
        case kUtf16Big:
            return PutUtf16(character, converter.to == kUtf16Big, text);
        default:
            return converter.page.Encode(character, text);
    }
}

std::size_t Fail(int error) {
    errno = error;
    return static_cast<std::size_t>(-1);
}

}  // namespace

iconv_t iconv_open(const char* to, const char* from) {
    const unsigned target = PageOf(to);
    const unsigned source = PageOf(from);
    if (target == kUnknownPage || source == kUnknownPage || (!IsUnicode(target) && !IsUnicode(source))) {
        errno = EINVAL;
        return reinterpret_cast<iconv_t>(-1);
    }
    return new Converter{source, target, CodePage(IsUnicode(target) ? source : target)};
}

size_t iconv(iconv_t converter, char** in, size_t* inLeft, char** out, size_t* outLeft) {
    if (in == nullptr || *in == nullptr) {
        return 0;
    }
    const auto& known = *static_cast<const Converter*>(converter);
    while (*inLeft > 0) {
        const Taken taken = Take(known, *in, *inLeft);
        if (taken.length == 0) {
            return Fail(EINVAL);
        }
        char text[4];
        const std::size_t size = taken.character == kInvalid ? 0 : Put(known, taken.character, text);
        if (size == 0) {
            return Fail(EILSEQ);
        }
        if (size > *outLeft) {
            return Fail(E2BIG);
        }
        *out = std::copy_n(text, size, *out);
        *outLeft -= size;
        *in += taken.length;
        *inLeft -= taken.length;
    }
    return 0;
}

int iconv_close(iconv_t converter) {
    delete static_cast<Converter*>(converter);
    return 0;
}
