#include "desk/reference/template_text.h"

#include <array>
#include <functional>
#include <map>
#include <stdexcept>

#include "desk/reference/completion_texts.h"
#include "desk/reference/manual_texts.h"

namespace ventrix::desk {
namespace {

constexpr std::array kCommands = {Command::kPublish, Command::kValidate, Command::kRequest, Command::kInit};

Command CommandNamed(const std::string& name) {
    for (const Command command : kCommands) {
        if (name == NameOf(command)) {
            return command;
        }
    }
    throw std::invalid_argument("unknown command '" + name + "' in the template");
}

using PartOfCommand = std::function<std::string(Command)>;

const std::map<std::string, PartOfCommand> kPartsOfCommand = {
    {"man-options", ManOptions}, {"markdown-options", MarkdownOptions}, {"bash-options", BashOptions},
    {"zsh-options", ZshOptions}, {"fish-options", FishOptions},         {"description", DescriptionOf},
};

const std::map<std::string, std::function<std::string()>> kParts = {
    {"man-keys", ManKeys},
    {"man-exit-statuses", ManExitStatuses},
    {"markdown-exit-statuses", MarkdownExitStatuses},
    {"bash-values", BashValues},
    {"version", [] { return std::string(kVersion); }},
};

/// The text for the words between two "@", such as "man-options publish".
std::string PartFor(const std::string& words) {
    if (const auto part = kParts.find(words); part != kParts.end()) {
        return part->second();
    }
    const std::size_t space = words.find(' ');
    const auto part = kPartsOfCommand.find(words.substr(0, space));
    if (part == kPartsOfCommand.end() || space == std::string::npos) {
        throw std::invalid_argument("unknown part '" + words + "' in the template");
    }
    return part->second(CommandNamed(words.substr(space + 1)));
}

/// Shells use "@" too, but not around such words.
bool IsPart(const std::string& words) {
    return !words.empty() && words.find_first_not_of("abcdefghijklmnopqrstuvwxyz- ") == std::string::npos;
}

}  // namespace

std::string FillTemplate(const std::string& text) {
    std::string filled;
    std::size_t start = 0;
    std::size_t at = text.find('@');
    while (at != std::string::npos) {
        const std::size_t end = text.find('@', at + 1);
        const std::string words = text.substr(at + 1, end - at - 1);
        if (end != std::string::npos && IsPart(words)) {
            filled += text.substr(start, at - start) + PartFor(words);
            start = end + 1;
            at = text.find('@', start);
        } else {
            at = end;
        }
    }
    return filled + text.substr(start);
}

}  // namespace ventrix::desk
