#include "kit/text/strings.h"

#include <algorithm>
#include <cstring>

#include "kit/text/case_table.h"

namespace ventrix {
namespace {

const char* OrEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

unsigned char Fold(char byte) {
    return Q_FoldByte(static_cast<unsigned char>(byte));
}

// Copies count bytes to the place and terminates behind them.
void Place(char* place, const char* text, std::uint32_t count) {
    std::memmove(place, text, count);
    place[count] = '\0';
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
        Place(destination, OrEmpty(text), Q_StrLen(text));
    }
}

std::uint32_t Q_StrCopyN(char* destination, const char* text, std::uint32_t size) {
    if (destination == nullptr) {
        return 0;
    }
    const std::uint32_t count = size == 0 ? 0 : std::min(Q_StrLen(text), size - 1);
    Place(destination, OrEmpty(text), count);
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
    Place(destination + length, &byte, 1);
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

}  // namespace ventrix
