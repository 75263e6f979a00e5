#include "platform/command_line.h"

#include <cstddef>

namespace ventrix::platform {
namespace {

bool IsSpace(char c) {
    return c == ' ' || c == '\t';
}

void SkipSpaces(std::string_view text, std::size_t& at) {
    while (at < text.size() && IsSpace(text[at])) {
        ++at;
    }
}

std::string TakeProgram(std::string_view text, std::size_t& at) {
    const bool quoted = text[at] == '"';
    const std::size_t start = quoted ? at + 1 : at;
    std::size_t end = start;
    while (end < text.size() && (quoted ? text[end] != '"' : !IsSpace(text[end]))) {
        ++end;
    }
    at = quoted && end < text.size() ? end + 1 : end;
    return std::string(text.substr(start, end - start));
}

/// Reads a run of backslashes, and the quote after it if they make it a literal one.
void TakeBackslashes(std::string_view text, std::size_t& at, std::string& argument) {
    std::size_t count = 0;
    while (at < text.size() && text[at] == '\\') {
        ++count;
        ++at;
    }
    const bool beforeQuote = at < text.size() && text[at] == '"';
    argument.append(beforeQuote ? count / 2 : count, '\\');
    if (beforeQuote && count % 2 == 1) {
        argument += '"';
        ++at;
    }
}

std::string TakeArgument(std::string_view text, std::size_t& at) {
    std::string argument;
    bool quoted = false;
    while (at < text.size() && (quoted || !IsSpace(text[at]))) {
        if (text[at] == '\\') {
            TakeBackslashes(text, at, argument);
        } else if (text[at] == '"' && quoted && text.substr(at, 2) == "\"\"") {
            argument += '"';
            at += 2;
        } else if (text[at] == '"') {
            quoted = !quoted;
            ++at;
        } else {
            argument += text[at++];
        }
    }
    return argument;
}

}  // namespace

std::vector<std::string> SplitCommandLine(std::string_view text) {
    std::vector<std::string> arguments;
    std::size_t at = 0;
    for (SkipSpaces(text, at); at < text.size(); SkipSpaces(text, at)) {
        arguments.push_back(arguments.empty() ? TakeProgram(text, at) : TakeArgument(text, at));
    }
    return arguments;
}

std::vector<std::string> NativeArguments(const DriveTable& drives, std::vector<std::string> arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string native = ToNative(drives, arguments[i]);
        if (i == 0 || (IsAbsoluteSystemPath(arguments[i]) && !native.empty())) {
            arguments[i] = native;
        }
    }
    return arguments;
}

}  // namespace ventrix::platform
