#include "kit/format/format_item.h"

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "kit/text/encodings.h"
#include "kit/text/strings.h"
#include "kit/text/utf8.h"

namespace ventrix {
namespace {

// Each item is printed by the C library's snprintf, with the item's own flags, width and precision. What has
// to be done here is to make the argument and the format agree. The format is known only at run time, so the
// argument is read from the va_list with the type that the item's size prefix and letter name, widened to one
// type of each kind (intmax_t, uintmax_t, double, long double, int, const char*), and the item is rewritten
// with the prefix of that type. PrintValue is then safe although the compiler cannot check its format.
// Letters of the C library that would take other arguments (such as "a" or "S") are refused when the item is
// read.

constexpr char kConversions[] = "dioxXucsfeEgGp%nC";
constexpr char kSizePrefixes[] = "hljztL";
constexpr char kFlagsAndSizes[] = " +-#0123456789.hljztL";           // allowed before the conversion
constexpr std::uint32_t kLongestItem = sizeof FormatItem::text - 2;  // rewriting may add the prefix "j"

// Appends the next integer argument in decimal. A negative precision means none, so its "." is removed.
bool AppendStar(FormatArguments& arguments, FormatItem& item, std::uint32_t& length) {
    const int value = va_arg(arguments.list, int);
    if (value < 0 && item.text[length - 1] == '.') {
        --length;
        return true;
    }
    const std::uint32_t available = kLongestItem - length;
    const int count = std::snprintf(item.text + length, available, "%d", value);
    length += static_cast<std::uint32_t>(count);
    return static_cast<std::uint32_t>(count) < available;
}

// Appends the size prefix for one of the forms "I64", "I32" and "I" of the other platform's C runtime, the
// last of which means the size of a pointer. Returns the length of the form.
std::uint32_t AppendSizeInBits(const char* form, FormatItem& item, std::uint32_t& length) {
    const std::string_view text = form;
    const std::string_view prefix = text.starts_with("I64") ? "ll" : text.starts_with("I32") ? "" : "z";
    for (const char letter : prefix) {
        item.text[length++] = letter;
    }
    return prefix == "z" ? 1 : 3;
}

bool HoldsOnlyFlags(std::string_view text) {
    return text.find_first_not_of(" +-#0") == std::string_view::npos;
}

// The letters between the width and the conversion character, such as "ll".
std::string_view SizePrefix(const FormatItem& item) {
    std::string_view text = item.text;
    text.remove_suffix(1);
    text.remove_prefix(text.find_last_not_of(kSizePrefixes) + 1);
    return text;
}

// The item with another size prefix and conversion character.
FormatItem WithPrefix(const FormatItem& item, const char* prefix, char letter) {
    FormatItem changed = item;
    Q_StrTrunc(changed.text, Q_StrLen(item.text) - 1 - static_cast<std::uint32_t>(SizePrefix(item).size()));
    Q_StrCatN(changed.text, prefix, sizeof changed.text);
    Q_StrCatChar(changed.text, letter, sizeof changed.text);
    return changed;
}

std::intmax_t NextInteger(std::string_view prefix, FormatArguments& arguments) {
    if (prefix == "l") {
        return va_arg(arguments.list, long);
    }
    if (prefix == "ll" || prefix == "L") {
        return va_arg(arguments.list, long long);
    }
    if (prefix == "j") {
        return va_arg(arguments.list, std::intmax_t);
    }
    if (prefix == "z" || prefix == "t") {
        return va_arg(arguments.list, std::ptrdiff_t);
    }
    const int value = va_arg(arguments.list, int);
    if (prefix == "hh") {
        return static_cast<signed char>(value);
    }
    return prefix == "h" ? static_cast<short>(value) : value;
}

// The value's bits as an unsigned number of the argument's own width.
std::uintmax_t AsUnsigned(std::string_view prefix, std::intmax_t value) {
    if (prefix == "hh") {
        return static_cast<unsigned char>(value);
    }
    if (prefix == "h") {
        return static_cast<unsigned short>(value);
    }
    if (prefix == "l") {
        return static_cast<unsigned long>(value);
    }
    return prefix.empty() ? static_cast<unsigned>(value) : static_cast<std::uintmax_t>(value);
}

}  // namespace

bool ReadFormatItem(const char* format, FormatArguments& arguments, FormatItem& item) {
    item.end = Q_StrLen(format);
    item.text[0] = '%';
    std::uint32_t length = 1;
    for (std::uint32_t at = 1; format[at] != '\0'; ++at) {
        if (length >= kLongestItem) {
            return false;
        }
        if (format[at] == '*') {
            if (!AppendStar(arguments, item, length)) {
                return false;
            }
            continue;
        }
        if (format[at] == '\'' && HoldsOnlyFlags({item.text + 1, length - 1})) {
            continue;  // Groups the digits as the locale says, and none is set.
        }
        if (format[at] == 'I') {
            at += AppendSizeInBits(format + at, item, length) - 1;
            continue;
        }
        item.text[length++] = format[at];
        if (std::strchr(kConversions, format[at]) != nullptr) {
            item.text[length] = '\0';
            item.letter = format[at];
            item.end = at + 1;
            return true;
        }
        if (std::strchr(kFlagsAndSizes, format[at]) == nullptr) {
            return false;
        }
    }
    return false;
}

FormatBuffer::~FormatBuffer() {
    Q_Free(heap_);
}

bool FormatBuffer::Grow(std::uint32_t size) {
    auto* grown = static_cast<char*>(Q_Realloc(heap_, size, 0));
    if (grown == nullptr) {
        return false;
    }
    heap_ = grown;
    size_ = size;
    return true;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

// The item was rewritten so that it names the type of the value.
template <class Value>
int FormatBuffer::PrintValue(const FormatItem& item, Value value) {
    const int length = std::snprintf(Buffer(), size_, item.text, value);
    if (length < 0 || static_cast<std::uint32_t>(length) < size_) {
        return length;
    }
    return Grow(static_cast<std::uint32_t>(length) + 1) ? std::snprintf(Buffer(), size_, item.text, value)
                                                        : -1;
}

#pragma GCC diagnostic pop

int FormatBuffer::PrintInteger(const FormatItem& item, FormatArguments& arguments) {
    return PrintValue(WithPrefix(item, "j", item.letter), NextInteger(SizePrefix(item), arguments));
}

int FormatBuffer::PrintUnsigned(const FormatItem& item, FormatArguments& arguments) {
    const std::string_view prefix = SizePrefix(item);
    return PrintValue(WithPrefix(item, "j", item.letter), AsUnsigned(prefix, NextInteger(prefix, arguments)));
}

int FormatBuffer::PrintFloating(const FormatItem& item, FormatArguments& arguments) {
    if (SizePrefix(item) == "L") {
        return PrintValue(item, va_arg(arguments.list, long double));
    }
    return PrintValue(WithPrefix(item, "", item.letter), va_arg(arguments.list, double));
}

// Prints the UTF-8 sequence at the pointer. In other encodings "C" prints nothing.
int FormatBuffer::PrintCharacter(const FormatItem& item, const char* character) {
    char sequence[5] = "";
    if (character != nullptr && Q_CurrentEncoding() == kUtf8Encoding) {
        const char* end = character;
        Q_Utf8Next(&end);
        Q_StrCopyN(sequence, character, static_cast<std::uint32_t>(end - character) + 1);
    }
    return PrintValue(WithPrefix(item, "", 's'), static_cast<const char*>(sequence));
}

int FormatBuffer::Print(const FormatItem& item, FormatArguments& arguments) {
    switch (item.letter) {
        case 'd':
        case 'i':
            return PrintInteger(item, arguments);
        case 'o':
        case 'u':
        case 'x':
        case 'X':
            return PrintUnsigned(item, arguments);
        case 'c':
            return PrintValue(WithPrefix(item, "", 'c'), va_arg(arguments.list, int));
        case 'C':
            return PrintCharacter(item, va_arg(arguments.list, const char*));
        case 's': {
            const char* text = va_arg(arguments.list, const char*);
            return PrintValue(WithPrefix(item, "", 's'), text == nullptr ? "" : text);
        }
        case 'p':
            return PrintValue(WithPrefix(item, "", 'p'), va_arg(arguments.list, const void*));
        case '%':
            return PrintValue(FormatItem{"%s", 's', 0}, "%");
        default:
            return PrintFloating(item, arguments);
    }
}

}  // namespace ventrix
