#include "kit/text/strings.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace ventrix {
namespace {

struct CasePair {
    unsigned char upper;
    unsigned char lower;
};

constexpr CasePair kAccentedPairs[] = {
    {0x80, 0x8A}, {0x81, 0x8C}, {0x82, 0x8D}, {0x83, 0x8E}, {0x84, 0x96}, {0x85, 0x9A},
    {0x86, 0x9F}, {0xAE, 0xBE}, {0xAF, 0xBF}, {0xCB, 0x88}, {0xCC, 0x8B}, {0xCD, 0x9B},
    {0xCE, 0xCF}, {0xD9, 0xD8}, {0xE5, 0x89}, {0xE6, 0x90}, {0xE7, 0x87}, {0xE8, 0x91},
    {0xE9, 0x8F}, {0xEA, 0x92}, {0xEB, 0x94}, {0xEC, 0x95}, {0xED, 0x93}, {0xEE, 0x97},
    {0xEF, 0x99}, {0xF1, 0x98}, {0xF2, 0x9C}, {0xF3, 0x9E}, {0xF4, 0x9D},
};

constexpr std::array<unsigned char, 256> BuildCaseTable() {
    std::array<unsigned char, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        const bool isCapital = byte >= 'A' && byte <= 'Z';
        table[byte] = static_cast<unsigned char>(isCapital ? byte + ('a' - 'A') : byte);
    }
    for (const CasePair& pair : kAccentedPairs) {
        table[pair.upper] = pair.lower;
    }
    return table;
}

constexpr std::array<unsigned char, 256> kCaseTable = BuildCaseTable();

const char* OrEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

unsigned char Fold(char byte) {
    return Q_FoldByte(static_cast<unsigned char>(byte));
}

// Copies count bytes to the destination and terminates them.
void CopyAndTerminate(char* destination, const char* text, std::uint32_t count) {
    std::memmove(destination, text, count);
    destination[count] = '\0';
}

}  // namespace

std::uint32_t Q_StrLen(const char* text) {
    return static_cast<std::uint32_t>(std::strlen(OrEmpty(text)));
}

char* Q_StrDup(const char* text) {
    if (text == nullptr) {
        return nullptr;
    }
    const std::uint32_t length = Q_StrLen(text);
    auto* copy = static_cast<char*>(Q_Calloc(length + 1, 1, 0));
    if (copy != nullptr) {
        std::memcpy(copy, text, length);
    }
    return copy;
}

void Q_StrCopy(char* destination, const char* text) {
    if (destination != nullptr) {
        CopyAndTerminate(destination, OrEmpty(text), Q_StrLen(text));
    }
}

std::uint32_t Q_StrCopyN(char* destination, const char* text, std::uint32_t size) {
    if (destination == nullptr) {
        return 0;
    }
    const std::uint32_t count = size == 0 ? 0 : std::min(Q_StrLen(text), size - 1);
    CopyAndTerminate(destination, OrEmpty(text), count);
    return count;
}

void Q_StrCat(char* destination, const char* text) {
    if (destination != nullptr) {
        Q_StrCopy(destination + Q_StrLen(destination), text);
    }
}

void Q_StrCatN(char* destination, const char* text, std::uint32_t size) {
    const std::uint32_t length = Q_StrLen(destination);
    if (destination != nullptr && length < size) {
        Q_StrCopyN(destination + length, text, size - length);
    }
}

std::uint32_t Q_StrCatChar(char* destination, char byte, std::uint32_t size) {
    const std::uint32_t length = Q_StrLen(destination);
    if (destination == nullptr || size == 0 || length >= size - 1) {
        return length;
    }
    CopyAndTerminate(destination + length, &byte, 1);
    return length + 1;
}

void Q_StrTrunc(char* destination, std::uint32_t index) {
    if (destination != nullptr) {
        destination[index] = '\0';
    }
}

bool Q_StrEqual(const char* first, const char* second) {
    return std::strcmp(OrEmpty(first), OrEmpty(second)) == 0;
}

bool Q_StrIEqual(const char* first, const char* second) {
    return Q_StrICompare(first, second) == 0;
}

int Q_StrICompare(const char* first, const char* second) {
    const char* a = OrEmpty(first);
    const char* b = OrEmpty(second);
    while (*a != '\0' && Fold(*a) == Fold(*b)) {
        ++a;
        ++b;
    }
    return Fold(*a) - Fold(*b);
}

bool Q_StrPrefix(const char* text, const char* prefix) {
    return std::strncmp(OrEmpty(text), OrEmpty(prefix), Q_StrLen(prefix)) == 0;
}

const char* Q_StrChr(const char* text, int character) {
    const char byte = static_cast<char>(character);
    return byte == '\0' ? nullptr : std::strchr(OrEmpty(text), byte);
}

unsigned char Q_FoldByte(unsigned char byte) {
    return kCaseTable[byte];
}

}  // namespace ventrix
