#include "kit/format/templates.h"

#include <algorithm>
#include <cstdarg>
#include <string>
#include <vector>

#include "kit/format/format.h"
#include "kit/resource_strings.h"
#include "kit/text/characters.h"
#include "kit/text/encodings.h"
#include "kit/text/strings.h"

namespace ventrix {
namespace {

constexpr std::uint32_t kFixedTextSize = 1024;
constexpr char kMissing[] = "???";
constexpr char kEllipsis[] = "...";
constexpr std::uint32_t kLeastShortened = 6;

bool isXmlAuthor = false;
std::string userName;

struct TemplateOutput {
    char* text;
    std::uint32_t size;
    std::uint32_t length;

    std::uint32_t Left() const { return size - length; }
    void Append(const char* more, std::uint32_t count) {
        length += Q_StrCopyChars(text + length, more, std::min(Left(), count + 1), Q_CurrentEncoding());
    }
};

// The first position from the wanted one on at which a character begins.
std::uint32_t CharacterStart(const char* text, std::uint32_t wanted) {
    const std::uint32_t before = Q_CutPoint(text, wanted, Q_CurrentEncoding());
    return before == wanted ? wanted : before + Q_CharacterLength(text + before, Q_CurrentEncoding());
}

// Inserts a string in at most `limit` bytes: its two ends if it is too long as a whole.
void Insert(TemplateOutput& output, const char* text, std::uint32_t limit) {
    const std::uint32_t length = Q_StrLen(text);
    if (length <= limit || limit < kLeastShortened) {
        output.Append(text, std::min(length, limit));
        return;
    }
    const std::uint32_t kept = limit - Q_StrLen(kEllipsis);
    const std::uint32_t first = kept / 2;
    output.Append(text, first);
    output.Append(kEllipsis, Q_StrLen(kEllipsis));
    const char* last = text + CharacterStart(text, length - (kept - first));
    output.Append(last, Q_StrLen(last));
}

std::string Formatted(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::string result;
    const auto append = [](void* context, const char* piece, std::uint32_t count) {
        static_cast<std::string*>(context)->append(piece, count);
        return count;
    };
    Q_FormatCore(append, &result, format, arguments);
    va_end(arguments);
    return result;
}

// The resource string with this id, expanded without arguments; empty if there is none.
std::string ResourceText(std::uint32_t id) {
    char text[kFixedTextSize] = "";
    Q_LoadResourceTemplate(id, text, sizeof text, "");
    return text;
}

std::string ArgumentText(const Q_TemplateArgument& argument) {
    switch (argument.type) {
        case 'd':
            return Formatted("%d", argument.integer);
        case 'x':
            return Formatted("%x", argument.integer);
        case 'X':
            return Formatted("%X", argument.integer);
        case 'f':
            return Formatted("%.3f", argument.number);
        case 'p':
            return Formatted("%p", argument.pointer);
        case 's':
            return argument.text == nullptr ? "" : argument.text;
        case 'r':
            return ResourceText(static_cast<std::uint32_t>(argument.integer));
        default:
            return kMissing;
    }
}

// The string that a letter inserts; `otherwise` for a letter without a meaning.
std::string TextFor(char letter, const Q_TemplateArguments& arguments, const char* otherwise) {
    if (letter >= '0' && letter <= '9') {
        return ArgumentText(arguments.slots[letter - '0']);
    }
    switch (letter) {
        case 'p':
            return isXmlAuthor ? "Quorlane XML Author" : "Quorlane";
        case 'u':
            return userName;
        case '%':
            return "%";
        default:
            return otherwise;
    }
}

// Reads a placeholder from after its "%", moves past it and returns the string to insert.
std::string ReadPlaceholder(const char*& text, const Q_TemplateArguments& arguments) {
    if (*text != '{') {
        const char letter = *text;
        text += letter == '\0' ? 0 : 1;
        return TextFor(letter, arguments, "%");
    }
    const char letter = *++text;
    while (*text != '\0' && *text != '}') {
        ++text;
    }
    text += *text == '}' ? 1 : 0;
    return letter == '}' || letter == '\0' ? "" : TextFor(letter, arguments, kMissing);
}

void Expand(const char* text, const Q_TemplateArguments& arguments, TemplateOutput& output) {
    while (*text != '\0') {
        const char* percent = Q_StrChr(text, '%');
        const std::uint32_t run =
            percent == nullptr ? Q_StrLen(text) : static_cast<std::uint32_t>(percent - text);
        output.Append(text, run);
        text += run;
        if (percent == nullptr) {
            return;
        }
        ++text;
        const std::string inserted = ReadPlaceholder(text, arguments);
        const std::uint32_t needed = Q_StrLen(text) + 1;
        Insert(output, inserted.c_str(), output.Left() > needed ? output.Left() - needed : 0);
    }
}

// Takes the arguments that the type string describes.
Q_TemplateArguments ReadArguments(const char* types, std::va_list list) {
    Q_TemplateArguments arguments{};
    for (int index = 0; index < kTemplateSlots && Q_StrChr("dxXrfps", types[index]) != nullptr; ++index) {
        Q_TemplateArgument& argument = arguments.slots[index];
        argument.type = types[index];
        if (argument.type == 'f') {
            argument.number = va_arg(list, double);
        } else if (argument.type == 's') {
            argument.text = va_arg(list, const char*);
        } else if (argument.type == 'p') {
            argument.pointer = va_arg(list, const void*);
        } else {
            argument.integer = va_arg(list, std::int32_t);
        }
    }
    return arguments;
}

}  // namespace

int Q_ExpandTemplate(const char* text, char* output, std::uint32_t size,
                     const Q_TemplateArguments* arguments) {
    if (output == nullptr || size == 0) {
        return 0;
    }
    *output = '\0';
    TemplateOutput target{output, size, 0};
    Expand(text == nullptr ? "" : text, arguments == nullptr ? Q_TemplateArguments{} : *arguments, target);
    return 0;
}

int Q_LoadResourceTemplate(std::uint32_t id, char* output, std::uint32_t size, const char* types, ...) {
    if (output == nullptr || size == 0) {
        return -1;
    }
    *output = '\0';
    std::vector<char> text(size);
    if (Q_LoadResourceString(id, text.data(), size) != 0) {
        return -1;
    }
    std::va_list list;
    va_start(list, types);
    const Q_TemplateArguments arguments = ReadArguments(types == nullptr ? "" : types, list);
    va_end(list);
    return Q_ExpandTemplate(text.data(), output, size, &arguments);
}

int Q_SetHostVariant(const char* name) {
    isXmlAuthor = Q_StrIEqual(name, "Quorlane Xml Author");
    return 0;
}

void Q_SetUserName(const char* name) {
    userName = name == nullptr ? "" : name;
}

}  // namespace ventrix
