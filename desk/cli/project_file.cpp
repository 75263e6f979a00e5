#include "desk/cli/project_file.h"

#include <toml++/toml.h>
#include <algorithm>
#include <cctype>
#include <string_view>

#include "desk/cli/exit_status.h"
#include "desk/cli/options.h"
#include "desk/cli/spelling.h"
#include "platform/native_files.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kMaxBytes = 1 << 20;
constexpr char kName[] = "name";
constexpr char kDocument[] = "document";
constexpr char kPublish[] = "publish";

/// The options that are keys, by where the key may stand.
struct Keys {
    std::vector<OptionDescription> ofProject, ofDeliverable;
};

/// Where an error is.
struct Place {
    const NativePath& file;
    int line;
};

[[noreturn]] void Refuse(const Place& place, const std::string& problem) {
    throw Stop{kExitUsage, place.file.utf8 + ':' + std::to_string(place.line) + ": " + problem};
}

bool Contains(const std::vector<OptionDescription>& options, std::string_view name) {
    return std::ranges::any_of(options,
                               [name](const OptionDescription& option) { return option.name == name; });
}

Keys ReadKeys() {
    Keys keys{.ofProject = OptionsOf(Command::kPublish), .ofDeliverable = {}};
    std::erase_if(keys.ofProject,
                  [](const OptionDescription& option) { return IsCommandLineOnly(option.name); });
    keys.ofDeliverable = keys.ofProject;
    for (OptionDescription& option : OptionsOf(Command::kValidate)) {
        if (!IsCommandLineOnly(option.name) && !Contains(keys.ofProject, option.name)) {
            keys.ofProject.push_back(std::move(option));
        }
    }
    return keys;
}

int LineOf(const toml::source_region& source) {
    return static_cast<int>(source.begin.line);
}

struct Entry {
    std::string key;
    const toml::node* value;
    int line;
};

/// The entries in the order of the file, so that the first error is reported.
std::vector<Entry> EntriesOf(const toml::table& table) {
    std::vector<Entry> entries;
    for (const auto& [key, value] : table) {
        entries.push_back({std::string(key.str()), &value, LineOf(key.source())});
    }
    std::ranges::stable_sort(entries, {}, &Entry::line);
    return entries;
}

[[noreturn]] void RefuseKey(const Place& place, const std::string& key,
                            const std::vector<OptionDescription>& options, std::vector<std::string> further) {
    if (IsCommandLineOnly(key)) {
        Refuse(place, '\'' + key + "' can be given on the command line only");
    }
    if (key == kName) {
        Refuse(place, "'name' is a key of a deliverable; write [[publish]] above it");
    }
    for (const OptionDescription& option : options) {
        further.push_back(option.name);
    }
    const std::string meant = MeantWord(key, further);
    Refuse(place, "unknown key '" + key + '\'' +
                      (meant.empty() ? "; the keys are the long options that 'ventrix help publish' lists"
                                     : "; did you mean '" + meant + "'?"));
}

std::string StringOf(const Place& place, const std::string& key, const toml::node& node) {
    const auto text = node.value_exact<std::string>();
    if (!text) {
        Refuse(place, key + ": the value must be a string in quotes");
    }
    if (text->empty()) {
        Refuse(place, key + ": the value is empty");
    }
    if (text->find('\0') != std::string::npos) {
        Refuse(place, key + ": the value contains a null character");
    }
    return *text;
}

NativePath PathIn(const NativePath& folder, const std::string& path) {
    const std::filesystem::path native = ToFilesystem({path});
    return native.is_absolute() ? NativePath{path}
                                : AbsolutePath(FromFilesystem(ToFilesystem(folder) / native));
}

/// The value with its path, if it is one, made absolute. The type may list words before the path, as in
/// "builtin|installed|FOLDER", or a name, as in "X=FOLDER".
std::string Resolved(const std::string& type, const std::string& value, const NativePath& folder) {
    const auto isPath = [](std::string_view word) {
        return word == "FILE" || word == "FOLDER" || word == "PATH";
    };
    const std::size_t equals = value.find('=');
    if (const std::size_t end = type.find('='); end != std::string::npos) {
        return isPath(std::string_view(type).substr(end + 1)) && equals != std::string::npos
                   ? value.substr(0, equals + 1) + PathIn(folder, value.substr(equals + 1)).utf8
                   : value;
    }
    bool path = false;
    for (std::size_t start = 0; start <= type.size();) {
        const std::size_t end = std::min(type.find('|', start), type.size());
        const std::string word = type.substr(start, end - start);
        if (word == value) {
            return value;
        }
        path = path || isPath(word);
        start = end + 1;
    }
    return path ? PathIn(folder, value).utf8 : value;
}

std::vector<std::string> FlagValues(const Place& place, const std::string& key, const toml::node& node) {
    const auto value = node.value_exact<bool>();
    if (!value) {
        Refuse(place, key + ": the value must be true or false, without quotes");
    }
    return {*value ? "true" : "false"};
}

/// The strings of a value: one, several in an array, or those of a table as NAME=VALUE.
std::vector<std::string> StringsOf(const Place& place, const OptionDescription& option,
                                   const toml::node& node) {
    std::vector<std::string> values;
    if (const toml::array* list = node.as_array(); list != nullptr && option.repeats) {
        for (const toml::node& item : *list) {
            values.push_back(StringOf({place.file, LineOf(item.source())}, option.name, item));
        }
        return values;
    }
    const toml::table* table = node.as_table();
    if (table != nullptr && option.repeats && option.type.find('=') != std::string::npos) {
        for (const Entry& entry : EntriesOf(*table)) {
            values.push_back(entry.key + '=' +
                             StringOf({place.file, entry.line}, option.name + '.' + entry.key, *entry.value));
        }
        return values;
    }
    if (node.is_string() || !option.repeats) {
        return {StringOf(place, option.name, node)};
    }
    Refuse(place, option.name + ": the value must be a string in quotes, or an array of strings");
}

ProjectSetting SettingOf(const Place& place, const OptionDescription& option, const toml::node& node) {
    ProjectSetting setting{
        .option = option.name, .values = {}, .line = place.line, .isFlag = option.type.empty()};
    if (setting.isFlag) {
        setting.values = FlagValues(place, option.name, node);
        return setting;
    }
    for (const std::string& value : StringsOf(place, option, node)) {
        setting.values.push_back(Resolved(option.type, value, FolderOf(place.file)));
    }
    return setting;
}

ProjectSetting ReadSetting(const Place& place, const Entry& entry,
                           const std::vector<OptionDescription>& options,
                           const std::vector<std::string>& further) {
    const auto option = std::ranges::find(options, entry.key, &OptionDescription::name);
    if (option == options.end()) {
        RefuseKey(place, entry.key, options, further);
    }
    return SettingOf(place, *option, *entry.value);
}

void CheckName(const Place& place, const std::string& name, const std::vector<Deliverable>& earlier) {
    if (name.find('/') != std::string::npos || name.starts_with('-')) {
        Refuse(place, "name: '" + name + "' must not contain a slash or begin with a hyphen");
    }
    for (const Deliverable& other : earlier) {
        if (other.name == name) {
            Refuse(place, "name: '" + name + "' is the name of the deliverable at line " +
                              std::to_string(other.line) + " too");
        }
    }
}

Deliverable ReadDeliverable(const NativePath& file, const toml::table& table, const Keys& keys,
                            const Project& project, const NativePath& document) {
    Deliverable deliverable{.name = {}, .document = document, .settings = {}, .line = LineOf(table.source())};
    for (const Entry& entry : EntriesOf(table)) {
        const Place place{file, entry.line};
        if (entry.key == kName) {
            deliverable.name = StringOf(place, kName, *entry.value);
            CheckName(place, deliverable.name, project.deliverables);
        } else if (entry.key == kDocument) {
            deliverable.document = PathIn(FolderOf(file), StringOf(place, kDocument, *entry.value));
        } else {
            deliverable.settings.push_back(ReadSetting(place, entry, keys.ofDeliverable, {kName, kDocument}));
        }
    }
    const Place place{file, deliverable.line};
    if (deliverable.name.empty()) {
        Refuse(place, "the deliverable has no name; add name = \"...\"");
    }
    if (deliverable.document.Empty()) {
        Refuse(place, "the deliverable '" + deliverable.name + "' has no document; add document = \"...\"");
    }
    return deliverable;
}

const toml::array& DeliverablesIn(const Place& place, const toml::node& node) {
    const toml::array* list = node.as_array();
    const bool tables =
        list != nullptr && std::ranges::all_of(*list, [](const toml::node& item) { return item.is_table(); });
    if (!tables) {
        Refuse(place, "'publish' must be a list of tables; write [[publish]] before each deliverable");
    }
    return *list;
}

Project ReadTable(const toml::table& table, const NativePath& file) {
    const Keys keys = ReadKeys();
    Project project{.file = file, .defaults = {}, .deliverables = {}};
    NativePath document;
    int documentLine = 0;
    const toml::array* deliverables = nullptr;
    for (const Entry& entry : EntriesOf(table)) {
        const Place place{file, entry.line};
        if (entry.key == kPublish) {
            deliverables = &DeliverablesIn(place, *entry.value);
        } else if (entry.key == kDocument) {
            document = PathIn(FolderOf(file), StringOf(place, kDocument, *entry.value));
            documentLine = entry.line;
        } else {
            project.defaults.push_back(ReadSetting(place, entry, keys.ofProject, {kPublish, kDocument}));
        }
    }
    if (deliverables != nullptr) {
        for (const toml::node& item : *deliverables) {
            project.deliverables.push_back(ReadDeliverable(file, *item.as_table(), keys, project, document));
        }
    } else if (!document.Empty()) {
        project.deliverables.push_back(
            {.name = {}, .document = document, .settings = {}, .line = documentLine});
    }
    return project;
}

}  // namespace

bool IsCommandLineOnly(std::string_view option) {
    return option == "config" || option == "dry-run" || option == "json";
}

const ProjectSetting* Find(const std::vector<ProjectSetting>& settings, const std::string& option) {
    const auto found = std::ranges::find(settings, option, &ProjectSetting::option);
    return found == settings.end() ? nullptr : &*found;
}

const ProjectSetting* Find(const Project& project, const Deliverable& deliverable,
                           const std::string& option) {
    const ProjectSetting* own = Find(deliverable.settings, option);
    return own != nullptr ? own : Find(project.defaults, option);
}

namespace {

/// What may help where the parser stops; empty if nothing does. Lines before it are well-formed, and columns
/// count characters.
std::string AdviceOn(const toml::parse_error& error, std::string_view text) {
    if (error.description().find("redefine") != std::string_view::npos) {
        return "; write each key once, with several values as an array, and [[publish]] for each deliverable";
    }
    const toml::source_position& at = error.source().begin;
    for (toml::source_index line = 1; line < at.line; ++line) {
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    }
    text = text.substr(0, text.find('\n'));
    text = text.substr(0, text.find_last_not_of(" \t\r") + 1);
    const std::size_t from = std::min<std::size_t>(at.column - 1, text.size());
    const std::string_view rest = text.substr(from);
    const auto isAscii = [](unsigned char c) { return c < 0x80; };
    if (!std::ranges::all_of(text, isAscii)) {
        return "; save the file as UTF-8 if it is in another encoding";
    }
    if (rest.empty()) {
        return "; the value on this line does not end: look for a missing quote or bracket";
    }
    const bool isWord = std::isalpha(static_cast<unsigned char>(rest.front())) != 0;
    return isWord && text.find('=') < from ? "; write text in quotes" : "";
}

}  // namespace

Project ParseProject(std::string_view text, const NativePath& file) {
    try {
        return ReadTable(toml::parse(text), file);
    } catch (const toml::parse_error& error) {
        const toml::source_position& at = error.source().begin;
        throw Stop{kExitUsage, file.utf8 + ':' + std::to_string(at.line) + ':' + std::to_string(at.column) +
                                   ": " + std::string(error.description()) + AdviceOn(error, text)};
    }
}

Project ReadProject(const NativePath& file) {
    std::string text;
    if (const std::error_code error = platform::ReadRegularFile(ToFilesystem(file), kMaxBytes, text)) {
        throw Stop{kExitUsage, "the project file " + file.utf8 + " cannot be read: " + error.message()};
    }
    return ParseProject(text, file);
}

}  // namespace ventrix::desk
