#include "desk/cli/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "desk/cli/exit_status.h"
#include "desk/cli/option_checks.h"
#include "desk/cli/option_definitions.h"
#include "desk/cli/spelling.h"

namespace ventrix::desk {
namespace {

constexpr char kDescription[] =
    "Publishes DITA and other XML as HTML and preserves what the transformation would lose: attributes,\n"
    "inline elements, XPaths and source paths.";

constexpr char kHint[] = "; see --help";
constexpr char kUsage[] = R"(Usage:
  ventrix publish DOCUMENT -o FOLDER [OPTIONS]   publish a document as HTML pages
  ventrix publish [NAME]                         publish what ventrix.toml describes
  ventrix validate DOCUMENT [OPTIONS]            check whether a document can be published
  ventrix request --document DOCUMENT TEXT       send a request to the module as given
  ventrix init [DOCUMENT]                        write a ventrix.toml for a document
  ventrix help [COMMAND]                         list all options of a command
)";

std::string Suggestion(const std::string& meant) {
    return "; did you mean '" + meant + "'? See --help";
}

std::vector<std::string> CommandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
        names.push_back(command->get_name());
    }
    return names;
}

constexpr char kExpected[] = " (expected publish, validate, request, init or help)";

void RequireKnownCommand(const std::string& word, const CLI::App& app) {
    const std::vector<std::string> names = CommandNames(app);
    if (std::ranges::find(names, word) == names.end()) {
        const std::string meant = MeantWord(word, names);
        throw Stop{kExitUsage, "unknown command '" + word + '\'' +
                                   (meant.empty() ? std::string(kExpected) + kHint : Suggestion(meant))};
    }
}

void RequireCommand(const std::vector<std::string>& words, const CLI::App& app) {
    if (words.empty()) {
        std::cerr << kUsage;
        throw Stop{kExitUsage, std::string("missing command") + kExpected};
    }
    if (!words.front().starts_with('-')) {
        RequireKnownCommand(words.front(), app);
    }
}

std::vector<std::string> OptionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

/// Reported before any other error: a misspelled option is often the one that seems to be missing.
void RefuseUnknownOption(const CLI::App& app) {
    for (const std::string& word : app.remaining(true)) {
        if (!word.starts_with('-')) {
            continue;
        }
        const std::string name = word.substr(0, word.find('='));
        const auto commands = app.get_subcommands();
        const std::string meant = MeantWord(name, OptionNames(commands.empty() ? app : *commands.front()));
        throw Stop{kExitUsage,
                   "unknown option '" + name + '\'' + (meant.empty() ? kHint : Suggestion(meant))};
    }
}

/// An empty token would end the request early, and an empty path names no file. The text of a whole request
/// may be empty, because the module replies to that.
void RefuseEmptyValues(const CLI::App& command) {
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& value : option->results()) {
            if (value.empty() && option->get_name() != kRequestText) {
                throw Stop{kExitUsage, option->get_name() + ": the value is empty" + kHint};
            }
        }
    }
}

/// Takes out options that set a list to nothing, as in "--attributes=".
std::vector<std::string> WithoutEmptyLists(std::vector<std::string> words, const CLI::App& app,
                                           std::set<std::string>& emptied) {
    const std::vector<const CLI::App*> commands =
        app.get_subcommands([&words](const CLI::App* one) { return one->get_name() == words.front(); });
    const CLI::App* command = commands.empty() ? nullptr : commands.front();
    const auto end = std::ranges::find(words, "--");
    const auto kept = std::remove_if(words.begin(), end, [&](const std::string& word) {
        const std::string name = word.substr(0, word.size() - std::min<std::size_t>(word.size(), 1));
        const CLI::Option* option = command != nullptr && word.starts_with("--") && word.ends_with('=')
                                        ? command->get_option_no_throw(name)
                                        : nullptr;
        const bool isEmptied = option != nullptr && option->get_expected_max() > 1;
        if (isEmptied) {
            emptied.insert(option->get_lnames().front());
        }
        return isEmptied;
    });
    words.erase(kept, end);
    return words;
}

/// The type of an option's value; empty for a flag.
std::string TypeOf(const CLI::Option& option) {
    return option.get_expected_min() == 0 ? std::string() : option.get_type_name();
}

OptionDescription Describe(const CLI::Option& option) {
    const std::vector<std::string>& letters = option.get_snames();
    OptionDescription description{.name = option.get_lnames().front(),
                                  .letter = letters.empty() ? std::string() : letters.front(),
                                  .type = TypeOf(option),
                                  .text = option.get_description(),
                                  .group = option.get_group(),
                                  .repeats = option.get_expected_max() > 1,
                                  .excludes = {}};
    for (const CLI::Option* other : option.get_excludes()) {
        description.excludes.insert(other->get_lnames().front());
    }
    return description;
}

Command CommandOf(const std::string& name) {
    for (const Command command : {Command::kValidate, Command::kRequest, Command::kInit}) {
        if (name == NameOf(command)) {
            return command;
        }
    }
    return Command::kPublish;
}

void NoteGiven(const CLI::App& command, std::set<std::string>& given) {
    for (const CLI::Option* option : command.get_options()) {
        if (option->count() > 0 && !option->get_lnames().empty()) {
            given.insert(option->get_lnames().front());
        }
    }
}

/// The help for a command; for all if the name is empty.
std::string HelpFor(const std::string& name) {
    CLI::App app{kDescription, "ventrix"};
    app.allow_windows_style_options(false);  // A word that begins with a slash is a path.
    Options options;
    std::string topic;
    AddCommands(app, options, topic);
    if (name.empty()) {
        return app.help();
    }
    RequireKnownCommand(name, app);
    return app.get_subcommand(name)->help(app.get_name());
}

/// False if help or the version was printed instead.
bool Parse(CLI::App& app, const std::vector<std::string>& words) {
    // CLI11 takes the words from the end.
    std::vector<std::string> reversed(words.rbegin(), words.rend());
    try {
        app.parse(reversed);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            RefuseUnknownOption(app);
            throw Stop{kExitUsage, std::string(error.what()) + kHint};
        }
        app.exit(error);
        return false;
    }
    return true;
}

}  // namespace

const char* NameOf(Command command) {
    switch (command) {
        case Command::kPublish:
            return "publish";
        case Command::kValidate:
            return "validate";
        case Command::kRequest:
            return "request";
        case Command::kInit:
            return "init";
    }
    return "";
}

std::string DescriptionOf(Command command) {
    CLI::App app;
    Options options;
    std::string topic;
    AddCommands(app, options, topic);
    return app.get_subcommand(NameOf(command))->get_description();
}

std::vector<OptionDescription> OptionsOf(Command command) {
    CLI::App app;
    Options options;
    std::string topic;
    AddCommands(app, options, topic);
    std::vector<OptionDescription> list;
    for (const CLI::Option* option : app.get_subcommand(NameOf(command))->get_options()) {
        if (!option->get_lnames().empty() && option->get_lnames().front() != "help") {
            list.push_back(Describe(*option));
        }
    }
    return list;
}

bool ReadOptions(const std::vector<std::string>& words, Options& options) {
    CLI::App app{kDescription, "ventrix"};
    app.allow_windows_style_options(false);  // A word that begins with a slash is a path.
    std::string topic;
    AddCommands(app, options, topic);
    // Set before parsing, so that usage errors are reported as JSON too.
    options.common.json = std::ranges::find(words, "--json") != words.end();
    RequireCommand(words, app);
    if (!Parse(app, WithoutEmptyLists(words, app, options.emptied))) {
        return false;
    }
    const CLI::App& command = *app.get_subcommands().front();
    if (command.get_name() == "help") {
        std::cout << HelpFor(topic);
        return false;
    }
    RefuseEmptyValues(command);
    NoteGiven(command, options.given);
    options.given.insert(options.emptied.begin(), options.emptied.end());
    options.command = CommandOf(command.get_name());
    return true;
}

void RequireComplete(const Options& options) {
    const bool takesProject = options.command == Command::kPublish || options.command == Command::kValidate;
    if (takesProject && options.common.document.empty()) {
        throw Stop{kExitUsage, std::string("DOCUMENT is required, or a ventrix.toml in this folder") + kHint};
    }
    if (options.command == Command::kPublish && options.publish.output.empty()) {
        throw Stop{kExitUsage, std::string("--output is required") + kHint};
    }
    if (takesProject) {
        CheckPublishOptions(options.publish);
    }
}

}  // namespace ventrix::desk
