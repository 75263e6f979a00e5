#include "desk/reference/completion_texts.h"

#include <cctype>
#include <map>
#include <set>
#include <sstream>

namespace ventrix::desk {
namespace {

/// What can be completed as the value of an option.
struct ValueForm {
    std::string words;  ///< Fixed values, separated by spaces.
    bool files = false;
    bool folders = false;
};

/// From the type of the value, such as "builtin|installed|FOLDER": what is in lower case is typed as it is.
ValueForm FormOf(const std::string& type) {
    ValueForm form;
    std::istringstream parts(type);
    for (std::string part; std::getline(parts, part, '|');) {
        if (std::islower(static_cast<unsigned char>(part.front())) != 0) {
            form.words += (form.words.empty() ? "" : " ") + part;
        }
        form.files = form.files || part == "FILE" || part == "PATH" || part == "DOCUMENT";
        form.folders = form.folders || part == "FOLDER";
    }
    return form;
}

/// The text with a backslash in front of each of the characters.
std::string Escaped(const std::string& text, const std::string& characters) {
    std::string escaped;
    for (const char c : text) {
        escaped += characters.find(c) == std::string::npos ? "" : "\\";
        escaped += c;
    }
    return escaped;
}

std::string QuotedForZsh(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return quoted + '\'';
}

std::string QuotedForFish(const std::string& text) {
    return '\'' + Escaped(text, "\\'") + '\'';
}

/// The names of an option as they are typed.
std::string BashNames(const OptionDescription& option, const char* separator) {
    const std::string name = "--" + option.name;
    return option.letter.empty() ? name : '-' + option.letter + separator + name;
}

/// The function calls that complete a value.
std::string BashAction(const std::string& type) {
    const ValueForm form = FormOf(type);
    std::string action;
    if (!form.words.empty()) {
        action += "_ventrix_words '" + form.words + "'; ";
    }
    if (form.files) {
        action += "_ventrix_paths -f; ";
    } else if (form.folders) {
        action += "_ventrix_paths -d; ";
    }
    return action + "return";
}

std::string ZshAction(const std::string& type) {
    const ValueForm form = FormOf(type);
    const std::string paths = form.files ? "_files" : form.folders ? "_directories" : "";
    if (form.words.empty()) {
        return paths.empty() ? " " : paths;
    }
    const std::string words = "(" + form.words + ")";
    return paths.empty()
               ? words
               : "{_alternative \"words\\:value\\:" + words + "\" \"paths\\:folder\\:" + paths + "\"}";
}

/// One specification for _arguments. An option that may be given once excludes itself.
std::string ZshOption(const OptionDescription& option, const std::string& name) {
    std::string others;
    for (const std::string& excluded : option.excludes) {
        others += "--" + excluded + ' ';
    }
    others += option.repeats ? "" : BashNames(option, " ");
    const bool isLong = name.starts_with("--");
    std::string specification = others.empty() ? "" : '(' + others + ')';
    specification += option.repeats ? "*" : "";
    specification += name;
    specification += option.type.empty() ? "" : isLong ? "=" : "+";
    specification += '[' + Escaped(option.text, "[]:\\") + ']';
    specification += option.type.empty() ? "" : ':' + option.type + ':' + ZshAction(option.type);
    return "\n                " + QuotedForZsh(specification) + " \\";
}

std::string FishAction(const std::string& type) {
    const ValueForm form = FormOf(type);
    if (form.files) {
        return " -r -F";
    }
    std::string words = form.words;
    if (form.folders) {
        words += (words.empty() ? "" : " ") + std::string("(__fish_complete_directories (commandline -ct))");
    }
    return " -x" + (words.empty() ? "" : " -a " + QuotedForFish(words));
}

/// The help's option is not among the described ones.
OptionDescription HelpOption() {
    return {.name = "help",
            .letter = "h",
            .type = {},
            .text = "Print this help and exit",
            .group = {},
            .excludes = {}};
}

std::vector<OptionDescription> AllOptionsOf(Command command) {
    std::vector<OptionDescription> options = OptionsOf(command);
    options.push_back(HelpOption());
    return options;
}

}  // namespace

std::string BashOptions(Command command) {
    std::string words;
    for (const OptionDescription& option : AllOptionsOf(command)) {
        words += (words.empty() ? "" : " ") + BashNames(option, " ");
    }
    return words;
}

std::string BashValues() {
    std::map<std::string, std::set<std::string>> namesByAction;
    for (const Command command : {Command::kPublish, Command::kValidate, Command::kRequest}) {
        for (const OptionDescription& option : OptionsOf(command)) {
            if (!option.type.empty()) {
                namesByAction[BashAction(option.type)].insert(BashNames(option, " | "));
            }
        }
    }
    std::string branches;
    for (const auto& [action, names] : namesByAction) {
        std::string pattern;
        for (const std::string& name : names) {
            pattern += (pattern.empty() ? "" : " | ") + name;
        }
        branches += (branches.empty() ? "        " : "\n        ") + pattern + ") " + action + " ;;";
    }
    return branches;
}

std::string ZshOptions(Command command) {
    std::string lines;
    for (const OptionDescription& option : AllOptionsOf(command)) {
        if (!option.letter.empty()) {
            lines += ZshOption(option, '-' + option.letter);
        }
        lines += ZshOption(option, "--" + option.name);
    }
    // The first one follows the indentation of the template.
    return lines.substr(lines.find('\''));
}

std::string FishOptions(Command command) {
    const std::string condition =
        std::string("complete -c ventrix -n '__fish_seen_subcommand_from ") + NameOf(command) + '\'';
    std::string lines;
    for (const OptionDescription& option : AllOptionsOf(command)) {
        lines += (lines.empty() ? "" : "\n") + condition;
        lines += option.letter.empty() ? "" : " -s " + option.letter;
        lines += " -l " + option.name + (option.type.empty() ? "" : FishAction(option.type));
        lines += " -d " + QuotedForFish(option.text);
    }
    return lines;
}

}  // namespace ventrix::desk
