// The project file, ventrix.toml: which documents are published where, and with which options. The long names
// of the options are its keys (docs/project-file.md). Strings are UTF-8.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

inline constexpr char kProjectFileName[] = "ventrix.toml";

/// An option that the file sets.
struct ProjectSetting {
    std::string option;               ///< Its long name without dashes.
    std::vector<std::string> values;  ///< "true" or "false" for a flag. Paths are absolute.
    int line = 0;
    bool isFlag = false;
};

/// One result that the project publishes.
struct Deliverable {
    std::string name;  ///< Empty only in a file without [[publish]] tables.
    NativePath document;
    std::vector<ProjectSetting> settings;
    int line = 0;
};

struct Project {
    NativePath file;
    std::vector<ProjectSetting> defaults;  ///< Of all deliverables, and of other documents beside the file.
    std::vector<Deliverable> deliverables;
};

/// Whether the option belongs to one call of the program, so that it cannot be a key.
bool IsCommandLineOnly(std::string_view option);

/// What a list of settings has for an option; null if nothing.
const ProjectSetting* Find(const std::vector<ProjectSetting>& settings, const std::string& option);

/// What the file sets for the deliverable: the deliverable's own value, else the default. Null if neither.
const ProjectSetting* Find(const Project& project, const Deliverable& deliverable, const std::string& option);

/// Throws Stop, with the line, for what is not TOML, an unknown key, a value of a wrong type, and a
/// deliverable without a name or document.
Project ReadProject(const NativePath& file);

/// The same for the text of a file; relative paths in it start at the folder of the file.
Project ParseProject(std::string_view text, const NativePath& file);

}  // namespace ventrix::desk
