#include "desk/cli/project_runs.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>

#include "desk/cli/exit_status.h"
#include "desk/cli/path_options.h"
#include "desk/cli/project_file.h"
#include "desk/cli/project_places.h"
#include "desk/cli/spelling.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

bool IsFile(const NativePath& path) {
    std::error_code error;
    return !path.Empty() && fs::is_regular_file(ToFilesystem(path), error);
}

/// Whether there is anything with this name. What is not a readable file is reported, not passed over.
bool IsPresent(const NativePath& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(ToFilesystem(path), error));
}

/// Empty if there is none.
NativePath FindProject(const CommonOptions& common) {
    if (!common.config.empty()) {
        RequireFile("--config", {common.config});
        return AbsolutePath({common.config});
    }
    const NativePath document = AbsolutePath({common.document});
    if (IsFile(document)) {
        NativePath beside{FolderOf(document).utf8 + kProjectFileName};
        if (IsPresent(beside)) {
            return beside;
        }
    }
    NativePath here = AbsolutePath({kProjectFileName});
    return IsPresent(here) ? here : NativePath{};
}

std::string Quoted(const std::vector<Deliverable>& deliverables) {
    std::string names;
    for (const Deliverable& deliverable : deliverables) {
        names += (names.empty() ? "'" : ", '") + deliverable.name + '\'';
    }
    return names;
}

std::vector<std::string> NamesOf(const Project& project) {
    std::vector<std::string> names;
    for (const Deliverable& deliverable : project.deliverables) {
        if (!deliverable.name.empty()) {
            names.push_back(deliverable.name);
        }
    }
    return names;
}

[[noreturn]] void RefuseUnknown(const Project& project, const std::string& name) {
    const std::string meant = MeantWord(name, NamesOf(project));
    throw Stop{kExitUsage, "'" + name + "' is neither a file nor a deliverable of " + project.file.utf8 +
                               (meant.empty() ? " (deliverables: " + Quoted(project.deliverables) + ")"
                                              : "; did you mean '" + meant + "'?")};
}

/// Without a project file, the word on the command line is a document. Throws Stop if it seems to be the name
/// of a deliverable. Accepts an empty one.
void RequireKnown(const std::string& document) {
    if (!document.empty() && document.find_first_of("/.") == std::string::npos &&
        !IsPresent(AbsolutePath({document}))) {
        throw Stop{kExitUnreadable, AbsolutePath({document}).utf8 +
                                        " does not exist, and there is no ventrix.toml in this folder with a "
                                        "deliverable of that name"};
    }
}

/// The deliverables that the word on the command line means: by name, else those of the document; all without
/// a word. None for a document that is no deliverable.
std::vector<Deliverable> Select(const Project& project, const std::string& word,
                                std::vector<std::string>& notes) {
    if (word.empty()) {
        return project.deliverables;
    }
    const NativePath path = RealPath(AbsolutePath({word}));
    std::vector<Deliverable> selected;
    const auto named = std::ranges::find(project.deliverables, word, &Deliverable::name);
    if (named != project.deliverables.end()) {
        if (IsFile(path) && path != RealPath(named->document)) {
            notes.push_back("'" + word + "' is taken as the deliverable of this name; for the file write ./" +
                            word);
        }
        return {*named};
    }
    std::ranges::copy_if(project.deliverables, std::back_inserter(selected),
                         [&path](const Deliverable& one) { return RealPath(one.document) == path; });
    std::error_code error;
    const bool exists = fs::exists(ToFilesystem(path), error);
    if (!exists && word.find('/') == std::string::npos && !NamesOf(project).empty()) {
        RefuseUnknown(project, word);
    }
    return selected;
}

/// One place on the command line for the results of several deliverables.
void RefuseSharedResult(const std::vector<Deliverable>& selected, const Options& options) {
    for (const char* option : kResultOptions) {
        if (selected.size() > 1 && options.given.contains(option)) {
            throw Stop{kExitUsage, std::string("--") + option + ": the deliverables " + Quoted(selected) +
                                       " cannot share it; name the one to publish"};
        }
    }
}

/// Whether one of the options is on: a flag that is set to false excludes nothing.
bool ExcludedBy(const OptionDescription& option, const std::vector<ProjectSetting>& settings) {
    return std::ranges::any_of(settings, [&option](const ProjectSetting& setting) {
        const bool off = setting.isFlag && setting.values.front() == "false";
        return option.excludes.contains(setting.option) && !off;
    });
}

bool ExcludedBy(const OptionDescription& option, const std::set<std::string>& given) {
    return std::ranges::any_of(option.excludes,
                               [&given](const std::string& other) { return given.contains(other); });
}

/// The settings that apply to a command: a later layer replaces an earlier one's value of the same option,
/// and removes options that cannot be combined with its own.
std::vector<ProjectSetting> Merge(const Project& project, const Deliverable* deliverable,
                                  const Options& options, Command command) {
    const std::vector<ProjectSetting> none;
    const std::vector<ProjectSetting>& own = deliverable == nullptr ? none : deliverable->settings;
    std::vector<ProjectSetting> merged;
    for (const OptionDescription& option : OptionsOf(command)) {
        if (options.given.contains(option.name) || ExcludedBy(option, options.given)) {
            continue;
        }
        if (const ProjectSetting* setting = Find(own, option.name)) {
            merged.push_back(*setting);
        } else if (const ProjectSetting* common = Find(project.defaults, option.name);
                   common != nullptr && !ExcludedBy(option, own)) {
            merged.push_back(*common);
        }
    }
    return merged;
}

/// The command line with the settings in front.
std::vector<std::string> WithSettings(const std::vector<std::string>& words,
                                      const std::vector<ProjectSetting>& settings) {
    std::vector<std::string> all{words.front()};
    for (const ProjectSetting& setting : settings) {
        for (const std::string& value : setting.values) {
            if (!setting.isFlag) {
                all.push_back("--" + setting.option + '=' + value);
            } else if (value == "true") {
                all.push_back("--" + setting.option);
            }
        }
    }
    all.insert(all.end(), words.begin() + 1, words.end());
    return all;
}

/// An option that was set to no value may be an empty variable of a script.
[[noreturn]] void RefuseEmptied(const std::string& option) {
    throw Stop{kExitUsage, "--" + option + ": the value is empty, and no project file sets one to leave out"};
}

/// Notes what the options that were set to no value leave out of the file; each must leave out something.
void NoteEmptied(const Project& project, const std::vector<Deliverable>& selected, const Options& options,
                 std::vector<std::string>& notes) {
    for (const std::string& option : options.emptied) {
        std::set<int> lines;
        const auto add = [&lines](const ProjectSetting* setting) {
            if (setting != nullptr) {
                lines.insert(setting->line);
            }
        };
        if (selected.empty()) {
            add(Find(project.defaults, option));
        }
        for (const Deliverable& deliverable : selected) {
            add(Find(project, deliverable, option));
        }
        if (lines.empty()) {
            RefuseEmptied(option);
        }
        for (const int line : lines) {
            notes.push_back("--" + option + "= leaves out the value of " + project.file.utf8 + ':' +
                            std::to_string(line));
        }
    }
}

/// Reports an error of a run with its place in the project file, unless it is about an option of the command
/// line.
[[noreturn]] void RefuseRun(const Stop& stop, const Options& run, const Project& project,
                            const Deliverable* deliverable) {
    std::string text = WithOrigin(stop.text, run);
    if (text == stop.text && deliverable != nullptr && !text.starts_with("--")) {
        text = project.file.utf8 + ':' + std::to_string(deliverable->line) + ": " +
               (deliverable->name.empty() ? "" : "deliverable '" + deliverable->name + "': ") + text;
    }
    throw Stop{stop.status, text};
}

void RequireOutput(const Options& run) {
    if (run.command == Command::kPublish && run.publish.output.empty()) {
        throw Stop{kExitUsage,
                   "no folder for the result; add output = \"FOLDER\" here, or give --output FOLDER"};
    }
}

void ReadSettings(const std::vector<std::string>& words, const std::vector<ProjectSetting>& settings,
                  const Project& project, Options& run) {
    for (const ProjectSetting& setting : settings) {
        run.origins[setting.option] = project.file.utf8 + ':' + std::to_string(setting.line);
    }
    ReadOptions(WithSettings(words, settings), run);
}

/// Gives a validation the options that only a publish of the deliverable has.
void ReadPublishSettings(const Options& options, const Project& project, const Deliverable* deliverable,
                         Options& run) {
    Options publish;
    ReadSettings({NameOf(Command::kPublish)}, Merge(project, deliverable, options, Command::kPublish),
                 project, publish);
    publish.publish.ditaval = run.publish.ditaval;
    run.publish = publish.publish;
    run.common.resources = publish.common.resources;
    run.origins.merge(publish.origins);
}

Options PlanRun(const std::vector<std::string>& words, const Options& options, const Project& project,
                const Deliverable* deliverable) {
    Options run;
    try {
        ReadSettings(words, Merge(project, deliverable, options, options.command), project, run);
        if (options.command == Command::kValidate) {
            ReadPublishSettings(options, project, deliverable, run);
        }
        run.common.document = deliverable == nullptr ? options.common.document : deliverable->document.utf8;
        run.common.config = project.file.utf8;
        run.deliverable = deliverable == nullptr ? std::string() : deliverable->name;
        RequireOutput(run);
        RequireComplete(run);
    } catch (const Stop& stop) {
        RefuseRun(stop, run, project, deliverable);
    }
    return run;
}

}  // namespace

RunPlan PlanRuns(const std::vector<std::string>& words, const Options& options) {
    RunPlan plan;
    const bool usesProject = options.command == Command::kPublish || options.command == Command::kValidate;
    const NativePath file = usesProject ? FindProject(options.common) : NativePath{};
    if (file.Empty()) {
        if (!options.emptied.empty()) {
            RefuseEmptied(*options.emptied.begin());
        }
        RequireKnown(options.common.document);
        RequireComplete(options);
        plan.runs.push_back(options);
        return plan;
    }
    const Project project = ReadProject(file);
    RequireSeparateResults(project);
    const std::vector<Deliverable> selected = Select(project, options.common.document, plan.notes);
    if (selected.empty() && options.common.document.empty()) {
        throw Stop{kExitUsage, file.utf8 +
                                   " names no document; add one as document = \"...\", or as a "
                                   "[[publish]] table"};
    }
    if (options.common.config.empty()) {
        plan.notes.push_back("options from " + file.utf8);
    }
    RefuseSharedResult(selected, options);
    NoteEmptied(project, selected, options, plan.notes);
    if (selected.empty()) {
        plan.runs.push_back(PlanRun(words, options, project, nullptr));
    }
    for (const Deliverable& deliverable : selected) {
        plan.runs.push_back(PlanRun(words, options, project, &deliverable));
    }
    return plan;
}

std::string WithOrigin(const std::string& text, const Options& options) {
    if (!text.starts_with("--")) {
        return text;
    }
    const std::string option = text.substr(2, text.find_first_of(": ", 2) - 2);
    const auto origin = options.origins.find(option);
    return origin == options.origins.end() ? text : origin->second + ": " + text;
}

}  // namespace ventrix::desk
