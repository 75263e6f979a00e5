#include "kit/format/scan.h"

#include <algorithm>
#include <bitset>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "kit/text/strings.h"

namespace ventrix {
namespace {

// The format is processed in steps: a run of white space, a literal byte, or a conversion. Each step has one
// of four outcomes, and the loop in Scan turns them into the result: a stored item counts, a match without a
// store (white space, a literal, a suppressed item, "n") does not, a mismatch ends the scan with the count so
// far, and so does the end of the input, which gives -1 if nothing was stored. The functions advance the text
// pointer as they consume input. Where they differ from the C library's scanner: a carriage return is not
// white space, a sign at the end of the input counts as the end of the input, and a "0x" without a digit
// reads as 0.

constexpr std::uint32_t kNoWidth = std::numeric_limits<std::uint32_t>::max();

// One conversion ("%" item) of the format.
struct Conversion {
    char letter = '\0';  // '\0': the format ends before the conversion character
    char size = '\0';    // 'h', 'l' or none
    bool isSuppressed = false;
    std::uint32_t width = kNoWidth;
    std::bitset<256> members;  // of a "[" set
};

enum class Outcome { kStored, kMatched, kMismatch, kInputEnd };

// A va_list may be an array type, so only a record around it can be passed by reference on every platform.
struct Arguments {
    va_list list;

    template <class T>
    T* Next() {
        return va_arg(list, T*);
    }
};

bool IsSpace(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\n';
}

bool IsDecimal(char byte) {
    return byte >= '0' && byte <= '9';
}

void SkipSpaces(const char*& text) {
    while (IsSpace(*text)) {
        ++text;
    }
}

unsigned Byte(char byte) {
    return static_cast<unsigned char>(byte);
}

// The byte's value as a digit; 99, which is above every base, if it is not one.
unsigned DigitValue(char byte) {
    if (IsDecimal(byte)) {
        return Byte(byte) - '0';
    }
    const unsigned letter = Byte(byte) | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : 99;
}

// Reads a set from after its "[" to after its "]", or to the end of the format if that is missing. A "]" at
// the start of the set is a member.
std::bitset<256> ReadSet(const char*& format) {
    const bool isNegated = *format == '^';
    if (isNegated) {
        ++format;
    }
    std::bitset<256> members;
    bool isFirst = true;
    while (*format != '\0' && (*format != ']' || isFirst)) {
        unsigned first = Byte(*format++);
        unsigned last = first;
        if (format[0] == '-' && format[1] != ']' && format[1] != '\0') {
            last = Byte(format[1]);
            format += 2;
        }
        for (; first <= last; ++first) {
            members.set(first);
        }
        isFirst = false;
    }
    if (*format == ']') {
        ++format;
    }
    return isNegated ? ~members : members;
}

std::uint32_t ReadWidth(const char*& format) {
    std::uint32_t width = 0;
    for (; IsDecimal(*format); ++format) {
        width = std::min<std::uint32_t>(width * 10 + DigitValue(*format), 0x1000000);
    }
    return width == 0 ? kNoWidth : width;
}

// Reads a conversion from after its "%". Characters that have no meaning before the conversion character are
// skipped.
Conversion ReadConversion(const char*& format) {
    Conversion item;
    while (*format != '\0' && Q_StrChr("dioxXucsfegn[%", *format) == nullptr) {
        if (IsDecimal(*format)) {
            item.width = ReadWidth(format);
            continue;
        }
        item.isSuppressed = item.isSuppressed || *format == '*';
        item.size = *format == 'h' || *format == 'l' ? *format : item.size;
        ++format;
    }
    if (*format != '\0') {
        item.letter = *format++;
    }
    if (item.letter == '[') {
        item.members = ReadSet(format);
    }
    return item;
}

template <class T>
Outcome Store(T value, const Conversion& item, Arguments& arguments) {
    if (item.isSuppressed) {
        return Outcome::kMatched;
    }
    *arguments.Next<T>() = value;
    return Outcome::kStored;
}

Outcome StoreInteger(std::uint32_t value, const Conversion& item, Arguments& arguments) {
    if (item.size == 'h') {
        return Store(static_cast<std::uint16_t>(value), item, arguments);
    }
    return Store(value, item, arguments);
}

unsigned BaseOf(char letter) {
    switch (letter) {
        case 'o':
            return 8;
        case 'x':
        case 'X':
            return 16;
        case 'i':
            return 0;
        default:
            return 10;
    }
}

// Skips "0x" if the base allows it and a digit follows, and determines the base for "i" (0).
unsigned ReadPrefix(const char*& text, const char* end, unsigned base) {
    const bool isHexadecimal =
        end - text > 2 && text[0] == '0' && (text[1] | 0x20) == 'x' && DigitValue(text[2]) < 16;
    if (isHexadecimal && (base == 0 || base == 16)) {
        text += 2;
        return 16;
    }
    if (base != 0) {
        return base;
    }
    return *text == '0' ? 8 : 10;
}

// The position up to which an item may read: its width, or the end of the text.
const char* LimitOf(const char* text, const Conversion& item) {
    return text + std::min(Q_StrLen(text), item.width);
}

bool ReadSign(const char*& text) {
    const bool isNegative = *text == '-';
    if (isNegative || *text == '+') {
        ++text;
    }
    return isNegative;
}

// Values wrap at 32 bits.
Outcome ScanInteger(const char*& text, const Conversion& item, Arguments& arguments) {
    const char* end = LimitOf(text, item);
    const bool isNegative = ReadSign(text);
    if (*text == '\0') {
        return Outcome::kInputEnd;
    }
    const unsigned base = ReadPrefix(text, end, BaseOf(item.letter));
    const char* digits = text;
    std::uint32_t value = 0;
    for (; text < end && DigitValue(*text) < base; ++text) {
        value = value * base + DigitValue(*text);
    }
    if (text == digits) {
        return Outcome::kMismatch;
    }
    return StoreInteger(isNegative ? 0 - value : value, item, arguments);
}

Outcome ScanFloating(const char*& text, const Conversion& item, Arguments& arguments) {
    const char* afterSign = text;
    ReadSign(afterSign);
    if (*afterSign == '\0') {
        return Outcome::kInputEnd;
    }
    // strtod itself would skip these, which are not white space here.
    if (std::strchr("\r\v\f", *text) != nullptr) {
        return Outcome::kMismatch;
    }
    const std::string candidate(text, LimitOf(text, item));
    char* end = nullptr;
    const double value = std::strtod(candidate.c_str(), &end);
    if (end == candidate.c_str()) {
        return Outcome::kMismatch;
    }
    text += end - candidate.c_str();
    return item.size == 'l' ? Store(value, item, arguments)
                            : Store(static_cast<float>(value), item, arguments);
}

// Reads the bytes that an "s" or "[" item accepts into the caller's buffer and terminates it.
template <class Accepts>
Outcome ScanBytes(const char*& text, const Conversion& item, Arguments& arguments, Accepts accepts) {
    if (*text == '\0') {
        return Outcome::kInputEnd;
    }
    const char* start = text;
    const char* end = LimitOf(text, item);
    while (text < end && accepts(*text)) {
        ++text;
    }
    if (text == start) {
        return Outcome::kMismatch;
    }
    if (item.isSuppressed) {
        return Outcome::kMatched;
    }
    *std::copy(start, text, arguments.Next<char>()) = '\0';
    return Outcome::kStored;
}

Outcome ScanCharacter(const char*& text, const Conversion& item, Arguments& arguments) {
    return *text == '\0' ? Outcome::kInputEnd : Store(*text++, item, arguments);
}

Outcome ScanLiteral(const char*& text, char literal) {
    if (*text == '\0') {
        return Outcome::kInputEnd;
    }
    if (*text != literal) {
        return Outcome::kMismatch;
    }
    ++text;
    return Outcome::kMatched;
}

Outcome StoreCount(std::ptrdiff_t bytesRead, const Conversion& item, Arguments& arguments) {
    StoreInteger(static_cast<std::uint32_t>(bytesRead), item, arguments);
    return Outcome::kMatched;
}

Outcome ScanItem(const char* start, const char*& text, const Conversion& item, Arguments& arguments) {
    if (item.letter != 'c' && item.letter != '[') {
        SkipSpaces(text);
    }
    switch (item.letter) {
        case '\0':
            return Outcome::kMismatch;
        case '%':
            return ScanLiteral(text, '%');
        case 'n':
            return StoreCount(text - start, item, arguments);
        case 'c':
            return ScanCharacter(text, item, arguments);
        case 's':
            return ScanBytes(text, item, arguments, [](char byte) { return !IsSpace(byte); });
        case '[':
            return ScanBytes(text, item, arguments,
                             [&item](char byte) { return item.members.test(Byte(byte)); });
        case 'e':
        case 'f':
        case 'g':
            return ScanFloating(text, item, arguments);
        default:
            return ScanInteger(text, item, arguments);
    }
}

// Processes one step of the format: a run of white space, a literal byte or a conversion.
Outcome ScanStep(const char* start, const char*& text, const char*& format, Arguments& arguments) {
    if (IsSpace(*format)) {
        SkipSpaces(format);
        SkipSpaces(text);
        return Outcome::kMatched;
    }
    const char literal = *format++;
    if (literal != '%') {
        return ScanLiteral(text, literal);
    }
    const Conversion item = ReadConversion(format);
    return ScanItem(start, text, item, arguments);
}

int Scan(const char* text, const char* format, Arguments& arguments) {
    const char* start = text;
    int count = 0;
    while (*format != '\0') {
        switch (ScanStep(start, text, format, arguments)) {
            case Outcome::kStored:
                ++count;
                break;
            case Outcome::kMatched:
                break;
            case Outcome::kMismatch:
                return count;
            case Outcome::kInputEnd:
                return count == 0 ? -1 : count;
        }
    }
    return count;
}

}  // namespace

int Q_ScanText(const char* text, const char* format, ...) {
    if (text == nullptr || *text == '\0') {
        return -1;
    }
    Arguments arguments;
    va_start(arguments.list, format);
    const int count = Scan(text, format == nullptr ? "" : format, arguments);
    va_end(arguments.list);
    return count;
}

}  // namespace ventrix
