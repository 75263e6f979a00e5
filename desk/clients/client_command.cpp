#include "desk/clients/client_command.h"

#include <algorithm>

namespace ventrix::desk {
namespace {

struct Word {
    std::string text;
    bool quoted = false;
};

/// The quote that ends a quoted word: the first before the end or the next option, as a path may contain a
/// quote.
std::size_t ClosingQuote(std::string_view text) {
    const std::size_t beforeOption = text.find("\" -");
    if (beforeOption != std::string_view::npos) {
        return beforeOption;
    }
    const std::size_t last = text.find_last_not_of(' ');
    return last != std::string_view::npos && text[last] == '"' ? last : text.find('"');
}

/// Removes the first word from the command, which must not start with a space.
Word TakeWord(std::string_view& text) {
    Word word{.text = {}, .quoted = text.front() == '"'};
    if (word.quoted) {
        text.remove_prefix(1);
    }
    const std::size_t end = std::min(word.quoted ? ClosingQuote(text) : text.find(' '), text.size());
    word.text = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return word;
}

}  // namespace

ClientCommand ParseClientCommand(std::string_view text) {
    ClientCommand command;
    std::string option;
    while (!text.empty()) {
        if (text.front() == ' ') {
            text.remove_prefix(1);
            continue;
        }
        Word word = TakeWord(text);
        if (command.verb.empty()) {
            command.verb = std::move(word.text);
        } else if (!word.quoted && word.text.starts_with('-')) {
            option = std::move(word.text);
            command.options[option].clear();
        } else if (!option.empty()) {
            command.options[option] = std::move(word.text);
            option.clear();
        }
    }
    return command;
}

std::string OptionOf(const ClientCommand& command, const std::string& name) {
    const auto found = command.options.find(name);
    return found == command.options.end() ? std::string() : found->second;
}

NativePath PathOptionOf(const ClientCommand& command, const std::string& name) {
    return ToNative(SystemPath{OptionOf(command, name)});
}

}  // namespace ventrix::desk
