#include "desk/reference/manual_texts.h"

#include <algorithm>

#include "desk/cli/exit_status.h"
#include "desk/cli/project_file.h"
#include "desk/reference/option_details.h"

namespace ventrix::desk {
namespace {

std::string Joined(const std::vector<std::string>& parts, const char* separator) {
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() ? "" : separator) + part;
    }
    return text;
}

std::string ReplaceAll(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// One line of running text for roff. Words in backquotes become bold.
std::string Roff(const std::string& text) {
    std::string escaped = ReplaceAll(ReplaceAll(text, "\\", "\\e"), "-", "\\-");
    for (std::size_t at = escaped.find('`'); at != std::string::npos; at = escaped.find('`', at)) {
        escaped.replace(at, 1, "\\fB");
        at = escaped.find('`', at);
        escaped.replace(at, at == std::string::npos ? 0 : 1, "\\fR");
    }
    // A dot or an apostrophe at the start of a line would begin a request.
    const bool isRequest = escaped.starts_with('.') || escaped.starts_with('\'');
    return (isRequest ? "\\&" : "") + escaped;
}

/// The help's text and the details, as sentences.
std::string Sentences(const OptionDescription& option) {
    const std::string details = DetailsOf(option.name);
    return option.text + '.' + (details.empty() ? "" : ' ' + details);
}

/// The names as they are typed, with dashes.
std::vector<std::string> TypedNames(const OptionDescription& option) {
    std::vector<std::string> names;
    if (!option.letter.empty()) {
        names.push_back('-' + option.letter);
    }
    names.push_back("--" + option.name);
    return names;
}

std::string ManOption(const OptionDescription& option) {
    std::vector<std::string> names;
    for (const std::string& name : TypedNames(option)) {
        names.push_back("\\fB" + Roff(name) + "\\fR");
    }
    const std::string value = option.type.empty() ? "" : " \\fI" + Roff(option.type) + "\\fR";
    return "\n.TP\n" + Joined(names, ", ") + value + '\n' + Roff(Sentences(option));
}

/// One cell of a table.
std::string Cell(const std::string& text) {
    return ReplaceAll(text, "|", "\\|");
}

std::string MarkdownOption(const OptionDescription& option) {
    std::vector<std::string> names = TypedNames(option);
    names.back() += option.type.empty() ? "" : ' ' + option.type;
    return "\n| `" + Cell(Joined(names, "`, `")) + "` | " + Cell(Sentences(option)) + " |";
}

using FormatGroup = std::string (*)(const std::string&);
using FormatOption = std::string (*)(const OptionDescription&);

std::string ByGroups(const std::vector<OptionDescription>& options, FormatGroup formatGroup,
                     FormatOption formatOption) {
    std::vector<std::string> groups;
    for (const OptionDescription& option : options) {
        if (std::ranges::find(groups, option.group) == groups.end()) {
            groups.push_back(option.group);
        }
    }
    std::string text;
    for (const std::string& group : groups) {
        text += (text.empty() ? "" : "\n") + formatGroup(group);
        for (const OptionDescription& option : options) {
            text += option.group == group ? formatOption(option) : "";
        }
    }
    return text;
}

std::string ManGroup(const std::string& name) {
    return ".SS " + Roff(name);
}

std::string MarkdownGroup(const std::string& name) {
    return "### " + name + "\n\n| option | meaning |\n|---|---|";
}

}  // namespace

std::string ManOptions(Command command) {
    return ByGroups(OptionsOf(command), ManGroup, ManOption);
}

std::string MarkdownOptions(Command command) {
    const std::string text = ByGroups(OptionsOf(command), MarkdownGroup, MarkdownOption);
    return ReplaceAll(text, "\n###", "\n\n###");
}

std::string ManKeys() {
    std::string text;
    for (const OptionDescription& option : OptionsOf(Command::kPublish)) {
        if (!IsCommandLineOnly(option.name)) {
            text += (text.empty() ? ".TP\n" : "\n.TP\n") + ("\\fB" + Roff(option.name)) + "\\fR\n" +
                    Roff(option.text) + '.';
        }
    }
    return text;
}

std::string ManExitStatuses() {
    std::string text;
    for (const ExitMeaning& meaning : kExitMeanings) {
        text += ".TP\n.B " + std::to_string(meaning.status) + '\n' + Roff(meaning.text) + ".\n";
    }
    return text + ".TP\n.B " + kSignalStatus + '\n' + Roff(kSignalMeaning) + '.';
}

std::string MarkdownExitStatuses() {
    std::string text = "| status | meaning |\n|---|---|\n";
    for (const ExitMeaning& meaning : kExitMeanings) {
        text += "| " + std::to_string(meaning.status) + " | " + meaning.text + " |\n";
    }
    return text + "| " + kSignalStatus + " | " + kSignalMeaning + " |";
}

}  // namespace ventrix::desk
